#pragma once

#include "EngineLink.h"

#include <memory>

namespace quillon {

// A link to the engine daemon over its local socket (see docs/PROTOCOL.md for the frames).
// A call blocks until its reply arrives; messages that come in meanwhile are kept and handed
// to the sink from the event loop afterwards.
class SocketLink final : public EngineLink
{
public:
    // Connects to the named socket; throws EngineError when nobody listens there.
    static std::unique_ptr<SocketLink> open(const QString &socketName, int timeoutMs = 2000);
    ~SocketLink() override;

    PropertyValue call(const QString &operation, const QList<PropertyValue> &args) override;
    void setMessageSink(MessageSink sink) override;
    void setClosedSink(std::function<void()> sink) override;
    bool isConnected() const override;

private:
    SocketLink();
    struct Private;
    std::unique_ptr<Private> d;
};

} // namespace quillon
