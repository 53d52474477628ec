#include "ConsumerSettings.h"

#include "HandleGuard.h"
#include "commonUtils.h"

QString GetConsumerSetting(quillon::SubscribeClient &client, const QString &key, const QString &defaultValue,
                           const QString &consumerId, const QString &section)
{
    HandleGuard request(client, client.NewBag());
    client.SetStringValue(request.get(), key, defaultValue);
    HandleGuard result(client, client.GetSettings(consumerId, section, request.get()));
    if (!result.isValid())
        return defaultValue;
    return client.GetStringValue(result.get(), key);
}

void SetConsumerSetting(quillon::SubscribeClient &client, const QString &consumerId, const QString &section,
                        const QString &key, const QString &value)
{
    HandleGuard values(client, client.NewBag());
    client.SetStringValue(values.get(), key, value);
    client.SetSettings(consumerId, section, values.get());
}

void SetConsumerSettingBool(quillon::SubscribeClient &client, const QString &consumerId,
                            const QString &section, const QString &key, bool value)
{
    SetConsumerSetting(client, consumerId, section, key, BoolToText(value));
}
