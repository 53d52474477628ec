#include "SyncJournal.h"

#include "EngineDatabase.h"
#include "SettingsStore.h"
#include "SqlTransaction.h"
#include "SubscriptionStore.h"

#include <QSet>

namespace quillon {

void SyncJournal::setQueueing(bool on)
{
    SqlTransaction transaction(m_db);
    if (on) {
        m_db.execute(QStringLiteral("INSERT OR IGNORE INTO sync_switch (name) VALUES ('queue')"), {},
                     "switching on the sync queue");
    } else {
        m_db.execute(QStringLiteral("DELETE FROM sync_switch"), {}, "switching off the sync queue");
        m_db.execute(QStringLiteral("DELETE FROM sync_changes"), {}, "forgetting the sync queue");
        m_db.execute(QStringLiteral("DELETE FROM sync_feeds"), {}, "forgetting the synchronised feeds");
    }
    transaction.commit();
}

SyncSnapshot SyncJournal::snapshot()
{
    SyncSnapshot snapshot;
    for (const auto &row : m_db.select(QStringLiteral("SELECT id, url, title, category FROM subscriptions"),
                                       {}, "reading subscriptions to synchronise"))
        snapshot.subscriptions.append(
            {row.at(0).toInt(), row.at(1).toString(), row.at(2).toString(), row.at(3).toString()});
    for (const auto &row :
         m_db.select(QStringLiteral("SELECT a.id, s.url, a.link, a.guid, a.is_read FROM "
                                    "articles a JOIN subscriptions s ON s.id = a.subscription_id"),
                     {}, "reading articles to synchronise"))
        snapshot.articles.append({row.at(0).toLongLong(), row.at(1).toString(), row.at(2).toString(),
                                  row.at(3).toString(), row.at(4).toInt() != 0});
    for (const auto &row :
         m_db.select(QStringLiteral("SELECT url FROM sync_feeds"), {}, "reading the synchronised feeds"))
        snapshot.agreedUrls.insert(row.at(0).toString());
    readQueue(snapshot);
    return snapshot;
}

void SyncJournal::readQueue(SyncSnapshot &snapshot)
{
    const auto rows =
        m_db.select(QStringLiteral("SELECT id, kind, url, article_id FROM sync_changes ORDER BY id"), {},
                    "reading the sync queue");
    for (const auto &row : rows) {
        const QString kind = row.at(1).toString();
        const QString url = row.at(2).toString();
        if (kind == QLatin1String("subscribe")) {
            snapshot.subscribedHere.insert(url);
            snapshot.unsubscribedHere.remove(url);
        } else if (kind == QLatin1String("unsubscribe")) {
            snapshot.unsubscribedHere.insert(url);
            snapshot.subscribedHere.remove(url);
        } else {
            snapshot.readChangedHere.insert(row.at(3).toLongLong(), kind == QLatin1String("read"));
        }
        snapshot.lastChangeId = row.at(0).toLongLong();
    }
}

SyncJournal::Applied SyncJournal::apply(const SyncSnapshot &snapshot,
                                        const SyncPlan::Subscriptions &subscriptions,
                                        const SyncPlan::ReadStates &reads, const QList<RemoteFeed> &remote,
                                        const QDateTime &now)
{
    SqlTransaction transaction(m_db);
    const bool queueing =
        !m_db.select(QStringLiteral("SELECT 1 FROM sync_switch"), {}, "reading the sync switch").isEmpty();
    m_db.execute(QStringLiteral("DELETE FROM sync_switch"), {}, "pausing the sync queue");
    Applied applied;
    applySubscriptions(subscriptions, now, applied);
    QSet<qint32> counts;
    for (auto it = reads.setHere.cbegin(); it != reads.setHere.cend(); ++it) {
        for (const auto &row :
             m_db.select(QStringLiteral(
                             "UPDATE articles SET is_read = ? WHERE id = ? AND is_read <> ? AND NOT EXISTS "
                             "(SELECT 1 FROM sync_changes WHERE article_id = ? AND id > ?)"
                             " RETURNING subscription_id"),
                         {int(it.value()), it.key(), int(it.value()), it.key(), snapshot.lastChangeId},
                         "taking the server's read state")) {
            ++applied.readChanged;
            counts.insert(row.at(0).toInt());
        }
    }
    applied.countsChanged = counts.values();
    m_db.execute(QStringLiteral("DELETE FROM sync_changes WHERE id <= ?"), {snapshot.lastChangeId},
                 "forgetting the changes sent");
    remember(remote);
    if (queueing)
        m_db.execute(QStringLiteral("INSERT INTO sync_switch (name) VALUES ('queue')"), {},
                     "resuming the sync queue");
    transaction.commit();
    return applied;
}

void SyncJournal::applySubscriptions(const SyncPlan::Subscriptions &plan, const QDateTime &now,
                                     Applied &applied)
{
    for (const qint32 id : plan.removeHere) {
        if (!m_subscriptions.remove(id))
            continue;
        m_settings.removeSection(QStringLiteral("SubscriptionSpecifics_%1").arg(id));
        applied.removed.append(id);
    }
    for (const RemoteFeed &feed : plan.addHere) {
        if (!m_db.select(QStringLiteral("SELECT 1 FROM subscriptions WHERE url = ?"), {feed.url},
                         "looking for a synchronised feed")
                 .isEmpty())
            continue;
        auto request = PropertyBag::create();
        request->setText(QStringLiteral("TITLE"), feed.title);
        request->setText(QStringLiteral("URL"), feed.url);
        request->setText(QStringLiteral("CATEGORY"), feed.category);
        applied.added.append(m_subscriptions.create(*request, now));
    }
}

void SyncJournal::remember(const QList<RemoteFeed> &remote)
{
    m_db.execute(QStringLiteral("DELETE FROM sync_feeds"), {}, "forgetting the synchronised feeds");
    for (const RemoteFeed &feed : remote)
        m_db.execute(QStringLiteral("INSERT OR REPLACE INTO sync_feeds (url, remote_id) VALUES (?, ?)"),
                     {feed.url, feed.id}, "remembering a synchronised feed");
}

} // namespace quillon
