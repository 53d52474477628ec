#include "LocalBagStore.h"

#include "ClientAccess.h"
#include "EngineClientBag.h"
#include "HandleGuard.h"

LocalBagStore::LocalBagStore(QString section) : m_section(std::move(section)) {}

SettingStore::Values LocalBagStore::Read(const Values &defaults)
{
    quillon::SubscribeClientPtr client = EngineClientBag::Client();
    HandleGuard request(*client, EngineClientBag::Fill(*client, defaults, false));
    HandleGuard stored(*client, ClientAccess::LoadBagFromSettings(*client, request.get(), m_section));
    return EngineClientBag::Take(*client, stored.get(), defaults);
}

void LocalBagStore::Write(const Values &values)
{
    quillon::SubscribeClientPtr client = EngineClientBag::Client();
    HandleGuard bag(*client, EngineClientBag::Fill(*client, values, false));
    ClientAccess::SaveBagToSettings(*client, bag.get(), m_section);
}
