#pragma once

#include "SyncPlan.h"

#include <QDateTime>

namespace quillon {

class EngineDatabase;
class SettingsStore;
class SubscriptionStore;

// The engine's side of synchronisation in its database: the queue of local changes (filled by
// the schema's triggers while the switch is on), the subscriptions agreed at the last run, and
// what a run changes here.
class SyncJournal
{
public:
    struct Applied
    {
        QList<qint32> added;
        QList<qint32> removed;
        int readChanged = 0;
        QList<qint32> countsChanged; // subscriptions whose read counts moved
    };

    SyncJournal(EngineDatabase &db, SubscriptionStore &subscriptions, SettingsStore &settings)
        : m_db(db), m_subscriptions(subscriptions), m_settings(settings)
    {
    }

    // Off forgets the queue and the agreed subscriptions: switching on again starts with a merge.
    void setQueueing(bool on);
    [[nodiscard]] SyncSnapshot snapshot();
    // In one transaction, without queueing its own changes: the run's changes here, the queue
    // up to the snapshot forgotten, remote the agreed subscriptions. Changes made here during
    // the run stay queued and keep their articles' state.
    Applied apply(const SyncSnapshot &snapshot, const SyncPlan::Subscriptions &subscriptions,
                  const SyncPlan::ReadStates &reads, const QList<RemoteFeed> &remote, const QDateTime &now);

private:
    void readQueue(SyncSnapshot &snapshot);
    void applySubscriptions(const SyncPlan::Subscriptions &plan, const QDateTime &now, Applied &applied);
    void remember(const QList<RemoteFeed> &remote);

    EngineDatabase &m_db;
    SubscriptionStore &m_subscriptions;
    SettingsStore &m_settings;
};

} // namespace quillon
