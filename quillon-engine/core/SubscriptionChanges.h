#pragma once

#include "EngineMessenger.h"
#include "SubscriptionStore.h"

#include <QHash>
#include <QList>
#include <QString>

namespace quillon {

// Tells every consumer when what it shows of a subscription changed: its title, its last
// status or its article counts ("SubscriptionChanged"). An update that changed none of these
// says nothing, so a thousand feeds that answer "Not modified" cost no messages after the first.
class SubscriptionChanges
{
public:
    SubscriptionChanges(SubscriptionStore &subscriptions, EngineMessenger messenger)
        : m_subscriptions(subscriptions), m_messenger(std::move(messenger))
    {
    }

    // After an update of the subscription: announces it when it differs from what was last announced.
    void afterUpdate(qint32 subscriptionId);
    // After an update that can only have changed the status: compared with what was announced
    // without reading the store, as most updates are a "Not modified".
    void afterStatus(qint32 subscriptionId, const QString &status);
    // After an update nobody was connected to hear of: the next client hears of the next one.
    void forget(qint32 subscriptionId) { m_announced.remove(subscriptionId); }
    // Their counts changed (read marks): announced in one message.
    void countsChanged(const QList<qint32> &subscriptionIds);

private:
    // False for a subscription that is gone.
    bool remember(qint32 subscriptionId, bool *changed = nullptr);
    void announce(const QList<qint32> &subscriptionIds);

    SubscriptionStore &m_subscriptions;
    EngineMessenger m_messenger;
    QHash<qint32, SubscriptionStore::Summary> m_announced;
};

} // namespace quillon
