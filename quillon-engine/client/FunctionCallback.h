#pragma once

#include "ISubscribeClientCallback.h"

#include <functional>

namespace quillon {

// Hands each answer or message to a function; the client owns the bag. For consumers that
// need no window to receive what the engine sends.
class FunctionCallback : public ISubscribeClientCallback
{
public:
    explicit FunctionCallback(std::function<void(Handle)> f) : m_f(std::move(f)) {}
    void Setup(QObject *) override {}
    void Shutdown() override { m_f = nullptr; }
    qint32 ProcessMessage(Handle &bag) override
    {
        if (m_f)
            m_f(bag);
        return 0;
    }

private:
    std::function<void(Handle)> m_f;
};

} // namespace quillon
