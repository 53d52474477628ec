#pragma once

#include "SubscribeClient.h"

#include <QString>

// Settings the engine holds for every consumer, addressed by consumer ID, module section and
// key. A key never written reads as the caller's default. Engine failures (e.g. a client that
// is not connected) propagate as quillon::EngineError; no handle is leaked either way.
[[nodiscard]] QString GetConsumerSetting(quillon::SubscribeClient &client, const QString &key,
                                         const QString &defaultValue, const QString &consumerId,
                                         const QString &section);
void SetConsumerSetting(quillon::SubscribeClient &client, const QString &consumerId, const QString &section,
                        const QString &key, const QString &value);
// Stores "1" or "0".
void SetConsumerSettingBool(quillon::SubscribeClient &client, const QString &consumerId,
                            const QString &section, const QString &key, bool value);
