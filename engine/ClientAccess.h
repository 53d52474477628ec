#pragma once

#include "SubscribeClient.h"

#include <QString>

// The one engine client of the process, and the bridges between bags and the local store.
namespace ClientAccess {

// A new reference to the engine client, or null before a successful connection.
quillon::SubscribeClientPtr GetEngineClient();
void SetEngineClient(quillon::SubscribeClientPtr client);

// Each non-empty name of the bag read from the local store (application "Quillon", the given
// section) with the bag's value as default, into a new bag the caller releases.
quillon::Handle LoadBagFromSettings(quillon::SubscribeClient &client, quillon::Handle bag,
                                    const QString &section);
// Each non-empty name of the bag written to the local store under the given section.
void SaveBagToSettings(quillon::SubscribeClient &client, quillon::Handle bag, const QString &section);

} // namespace ClientAccess
