#pragma once

#include "EngineCore.h"
#include "EngineLink.h"

#include <QPointer>

namespace quillon {

// A link to an engine core living in this process, on this thread: used by tests and when
// the engine is embedded. Messages are deferred to the event loop like a socket's would be.
class InProcessLink final : public EngineLink
{
public:
    explicit InProcessLink(EngineCore *core);
    ~InProcessLink() override;

    PropertyValue call(const QString &operation, const QList<PropertyValue> &args) override;
    void setMessageSink(MessageSink sink) override;
    bool isConnected() const override { return !m_core.isNull(); }

private:
    QPointer<EngineCore> m_core;
    EngineCore::SessionId m_session = 0;
    std::shared_ptr<MessageSink> m_sink;
    std::unique_ptr<QObject> m_context;
};

} // namespace quillon
