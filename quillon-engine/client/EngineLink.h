#pragma once

#include "PropertyBag.h"

#include <QList>
#include <QString>

#include <functional>

namespace quillon {

// A transport between a client and the engine core. It carries the engine operations by name
// with value arguments (handles never cross it) and brings engine messages back.
class EngineLink
{
public:
    // callbackId names the callback the client registered with Connect, SubmitRequest or
    // RequestPreview; the link calls the sink from the event loop only.
    using MessageSink = std::function<void(qint32 callbackId, const BagPtr &message)>;

    virtual ~EngineLink() = default;

    // Runs one operation and waits for its result; throws EngineError. Arguments are the
    // client's own objects: a link that does not serialise them must copy them.
    virtual PropertyValue call(const QString &operation, const QList<PropertyValue> &args) = 0;
    virtual void setMessageSink(MessageSink sink) = 0;
    [[nodiscard]] virtual bool isConnected() const = 0;
    // Called from the event loop once the engine's end has gone; links that cannot lose their
    // engine never call it.
    virtual void setClosedSink(std::function<void()> sink) { Q_UNUSED(sink); }
};

} // namespace quillon
