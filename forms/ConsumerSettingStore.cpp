#include "ConsumerSettingStore.h"

#include "EngineClientBag.h"
#include "HandleGuard.h"

ConsumerSettingStore::ConsumerSettingStore(QString consumerId, QString section, Kind kind)
    : m_consumerId(std::move(consumerId)), m_section(std::move(section)), m_kind(kind)
{
}

SettingStore::Values ConsumerSettingStore::Read(const Values &defaults)
{
    quillon::SubscribeClientPtr client = EngineClientBag::Client();
    HandleGuard request(*client, EngineClientBag::Fill(*client, defaults, m_kind == Kind::Integer));
    HandleGuard stored(*client, client->GetSettings(m_consumerId, m_section, request.get()));
    return EngineClientBag::Take(*client, stored.get(), defaults);
}

void ConsumerSettingStore::Write(const Values &values)
{
    quillon::SubscribeClientPtr client = EngineClientBag::Client();
    HandleGuard bag(*client, EngineClientBag::Fill(*client, values, m_kind == Kind::Integer));
    client->SetSettings(m_consumerId, m_section, bag.get());
}
