#pragma once

#include "TestEngine.h"

#include <QString>

// Subscriptions made the way the program makes them: an add request, answered later.
namespace DialogTestEngine {

// Connects the client as the configuration consumer.
void ConnectClient(quillon::SubscribeClient &client);
// The new subscription's ID, or 0 when the engine did not answer in time.
[[nodiscard]] qint32 AddSubscription(quillon::SubscribeClient &client, const QString &title,
                                     const QString &url);
// A property of the subscription as text, "-237237" when absent.
[[nodiscard]] QString ItemText(quillon::SubscribeClient &client, qint32 id, const QString &name);

} // namespace DialogTestEngine
