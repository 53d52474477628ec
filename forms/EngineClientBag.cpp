#include "EngineClientBag.h"

#include "ClientAccess.h"
#include "HandleGuard.h"
#include "PropertyBag.h"

namespace EngineClientBag {

quillon::SubscribeClientPtr Client()
{
    quillon::SubscribeClientPtr client = ClientAccess::GetEngineClient();
    if (!client)
        throw quillon::EngineError(QStringLiteral("The engine is not connected."));
    return client;
}

quillon::Handle Fill(quillon::SubscribeClient &client, const SettingStore::Values &values, bool numbers)
{
    HandleGuard bag(client, client.NewBag());
    for (auto it = values.cbegin(); it != values.cend(); ++it) {
        bool isNumber = false;
        const qint32 number = it.value().toInt(&isNumber);
        if (numbers && isNumber)
            client.SetLongValue(bag.get(), it.key(), number);
        else
            client.SetStringValue(bag.get(), it.key(), it.value());
    }
    return bag.take();
}

SettingStore::Values Take(quillon::SubscribeClient &client, quillon::Handle bag,
                          const SettingStore::Values &keys)
{
    SettingStore::Values values = keys;
    if (bag <= 0)
        return values;
    for (auto it = values.begin(); it != values.end(); ++it) {
        const QString text = client.GetStringValue(bag, it.key());
        if (text != quillon::kMissingText)
            it.value() = text;
    }
    return values;
}

} // namespace EngineClientBag
