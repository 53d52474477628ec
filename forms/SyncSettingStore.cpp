#include "SyncSettingStore.h"

#include "EngineClientBag.h"
#include "HandleGuard.h"

namespace {
const QString kRemote = QStringLiteral("SyncRemote");
const QString kServer = QStringLiteral("SyncServer");
const QString kUser = QStringLiteral("SyncUser");
const QString kPassword = QStringLiteral("SyncPassword");
const QString kFrequency = QStringLiteral("SyncFrequency");
} // namespace

SettingStore::Values SyncSettingStore::Read(const Values &defaults)
{
    quillon::SubscribeClientPtr client = EngineClientBag::Client();
    HandleGuard stored(*client, client->GetSyncSettings());
    return EngineClientBag::Take(*client, stored.get(), defaults);
}

void SyncSettingStore::Write(const Values &values)
{
    Values all = Read({{kRemote, "0"}, {kServer, ""}, {kUser, ""}, {kPassword, ""}, {kFrequency, "-1"}});
    all.insert(values);
    EngineClientBag::Client()->SetSyncSettings(all.value(kRemote).toInt(), all.value(kServer),
                                               all.value(kUser), all.value(kPassword),
                                               all.value(kFrequency).toInt());
}
