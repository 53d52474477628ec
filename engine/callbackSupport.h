#pragma once

#include "SubscribeClient.h"

#include <QString>

#include <memory>

class QObject;

// Requests the windows send to the engine. Status texts go to the target's SetStatusText,
// resolved by name so any window offering it can be the target.
namespace callbackSupport {

// Add requests submitted and not answered yet (see CBAddSub for its deliberate asymmetry).
qint32 &PendingAddCount();

qint32 RequestAddSubscription(QObject *target, const quillon::SubscribeClientPtr &client,
                              const QString &title, const QString &url, bool autoBind, const QString &user,
                              const QString &password, const QString &category);
void RemoveSubscription(quillon::SubscribeClient &client, qint32 subscriptionId, const QString &displayName,
                        QObject *statusTarget);
void UpdateAllSubscriptions(quillon::SubscribeClient &client);

// The address the user asked to check in the add wizard, kept with the client for the checker.
struct CheckNowRequest
{
    QString text;
    std::weak_ptr<quillon::SubscribeClient> client; // not kept alive by this
};
void CheckNow(const QString &text, const quillon::SubscribeClientPtr &client);
[[nodiscard]] const CheckNowRequest &LastCheckNow();

// Calls target->SetStatusText(text) when the target offers it.
void SetTargetStatusText(QObject *target, const QString &text);

} // namespace callbackSupport
