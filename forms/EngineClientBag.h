#pragma once

#include "SettingStore.h"
#include "SubscribeClient.h"

// What the engine-backed stores share: the process's client, and values in and out of bags.
namespace EngineClientBag {

// The connected engine client; throws quillon::EngineError before a connection.
[[nodiscard]] quillon::SubscribeClientPtr Client();
// A new bag holding the values; with numbers, each that reads as an integer is stored as one.
[[nodiscard]] quillon::Handle Fill(quillon::SubscribeClient &client, const SettingStore::Values &values,
                                   bool numbers);
// The text of each key of keys from the bag; a key the bag lacks keeps its value in keys.
[[nodiscard]] SettingStore::Values Take(quillon::SubscribeClient &client, quillon::Handle bag,
                                        const SettingStore::Values &keys);

} // namespace EngineClientBag
