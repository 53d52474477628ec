#pragma once

#include <QtGlobal>

class QObject;

namespace quillon {

using Handle = qint32;

// What a consumer implements to receive answers and engine messages. The client hands the
// callback a bag handle that it owns and releases after ProcessMessage returns.
class ISubscribeClientCallback
{
public:
    virtual ~ISubscribeClientCallback() = default;

    // Stores whom to notify; callback classes that need more offer a wider Setup beside this one.
    virtual void Setup(QObject *target) = 0;
    // Drops the references taken in Setup.
    virtual void Shutdown() = 0;
    // Called with the answer or message bag; returns 0.
    virtual qint32 ProcessMessage(Handle &bag) = 0;
};

} // namespace quillon
