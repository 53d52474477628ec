#include "ClientAccess.h"

#include "HandleGuard.h"
#include "LocalSettings.h"

namespace ClientAccess {

namespace {
const QString kApplication = QStringLiteral("Quillon");

quillon::SubscribeClientPtr &engineClient()
{
    static quillon::SubscribeClientPtr instance;
    return instance;
}
} // namespace

quillon::SubscribeClientPtr GetEngineClient()
{
    return engineClient();
}

void SetEngineClient(quillon::SubscribeClientPtr client)
{
    engineClient() = std::move(client);
}

quillon::Handle LoadBagFromSettings(quillon::SubscribeClient &client, quillon::Handle bag,
                                    const QString &section)
{
    HandleGuard names(client, client.ListNames(bag));
    HandleGuard result(client, client.NewBag());
    const qint32 count = client.ListCount(names.get());
    for (qint32 i = 0; i < count; ++i) {
        const QString name = client.ListString(names.get(), i);
        if (name.isEmpty())
            continue;
        const QString current = client.GetStringValue(bag, name);
        client.SetStringValue(result.get(), name, GetSetting(kApplication, section, name, current));
    }
    return result.take();
}

void SaveBagToSettings(quillon::SubscribeClient &client, quillon::Handle bag, const QString &section)
{
    HandleGuard names(client, client.ListNames(bag));
    const qint32 count = client.ListCount(names.get());
    for (qint32 i = 0; i < count; ++i) {
        const QString name = client.ListString(names.get(), i);
        if (!name.isEmpty())
            SaveSetting(kApplication, section, name, client.GetStringValue(bag, name));
    }
}

} // namespace ClientAccess
