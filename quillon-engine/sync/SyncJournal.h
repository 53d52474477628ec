#pragma once

#include "SyncPlan.h"
#include "SyncSnapshotReader.h"

#include <QDateTime>
#include <QDeadlineTimer>

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
        QSet<qint32> countsChanged; // subscriptions whose read counts moved
    };
    // What a run changes here, applied a slice at a time, and how far it got.
    struct Pending
    {
        QList<qint32> removeHere;
        QList<RemoteFeed> addHere;
        QList<std::pair<qint64, bool>> readHere; // article ID and its read state
        QList<RemoteFeed> remote;                // agreed once all is applied
        QHash<QString, QString> agreed;          // as the snapshot found it
        qint64 lastChangeId = 0;
        QDateTime now;
        qsizetype done = 0; // of the three lists in turn
    };

    SyncJournal(EngineDatabase &db, SubscriptionStore &subscriptions, SettingsStore &settings)
        : m_db(db), m_subscriptions(subscriptions), m_settings(settings)
    {
    }

    // Off forgets the queue and the agreed subscriptions: switching on again starts with a merge.
    void setQueueing(bool on);
    [[nodiscard]] SyncSnapshotReader snapshotReader() const { return SyncSnapshotReader(m_db); }
    // The articles of these subscriptions; none when they cannot be read (they are then not compared).
    [[nodiscard]] QList<LocalArticle> articlesOf(const QList<qint32> &subscriptionIds);
    [[nodiscard]] static Pending pending(const SyncSnapshot &snapshot,
                                         const SyncPlan::Subscriptions &subscriptions,
                                         const SyncPlan::ReadStates &reads, const QList<RemoteFeed> &remote,
                                         const QDateTime &now);
    // Applies what fits before the deadline, in one transaction that queues none of its own
    // changes; changes made here during the run stay queued and keep their articles' state. The
    // last slice forgets the queue up to the snapshot and keeps remote as the agreed
    // subscriptions, so a run cut off in between is simply done again. True once all is applied.
    bool applySome(Pending &pending, Applied &applied, const QDeadlineTimer &deadline);

private:
    // False when nothing is left.
    bool applyNext(Pending &pending, Applied &applied);
    void removeHere(qint32 id, Applied &applied);
    void addHere(const RemoteFeed &feed, const QDateTime &now, Applied &applied);
    void takeReadState(const std::pair<qint64, bool> &read, qint64 lastChangeId, Applied &applied);
    void conclude(const Pending &pending, bool queueing);
    void remember(const QList<RemoteFeed> &remote, const QHash<QString, QString> &agreed);

    EngineDatabase &m_db;
    SubscriptionStore &m_subscriptions;
    SettingsStore &m_settings;
};

} // namespace quillon
