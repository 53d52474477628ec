#include "SubscribeClientFactory.h"

#include "EngineSocketName.h"
#include "LinkedSubscribeClient.h"
#include "SocketLink.h"

namespace quillon {

namespace {
SubscribeClientFactory::Creator &creator()
{
    static SubscribeClientFactory::Creator instance;
    return instance;
}
} // namespace

SubscribeClientPtr SubscribeClientFactory::Create(const QString &progId)
{
    if (progId != kProgId)
        throw EngineError(QStringLiteral("Unknown engine client \"%1\"").arg(progId));
    if (creator())
        return creator()();
    // Comes back by itself when the engine is started again after a crash.
    return LinkedSubscribeClient::create(
        SocketLink::open(EngineSocketName()),
        []() -> std::unique_ptr<EngineLink> { return SocketLink::open(EngineSocketName(), 500); });
}

void SubscribeClientFactory::SetCreator(Creator newCreator)
{
    creator() = std::move(newCreator);
}

} // namespace quillon
