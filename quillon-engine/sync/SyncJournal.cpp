#include "SyncJournal.h"

#include "EngineDatabase.h"
#include "SettingsStore.h"
#include "SqlTransaction.h"
#include "SubscriptionStore.h"
#include "SyncLogging.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>

namespace quillon {

namespace {
QString jsonArray(const QJsonArray &array)
{
    return QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Compact));
}
} // namespace

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

QList<LocalArticle> SyncJournal::articlesOf(const QList<qint32> &subscriptionIds)
{
    QJsonArray ids;
    for (const qint32 id : subscriptionIds)
        ids.append(id);
    QList<LocalArticle> articles;
    try {
        // By subscription ID: the index of read states finds their articles.
        for (const auto &row :
             m_db.select(QStringLiteral("SELECT a.id, s.url, a.link, a.guid, a.is_read FROM articles a"
                                        " JOIN subscriptions s ON s.id = a.subscription_id"
                                        " WHERE a.subscription_id IN (SELECT value FROM json_each(?))"),
                         {jsonArray(ids)}, "reading articles to synchronise"))
            articles.append({row.at(0).toLongLong(), row.at(1).toString(), row.at(2).toString(),
                             row.at(3).toString(), row.at(4).toInt() != 0});
    } catch (const std::exception &e) {
        qCWarning(lcSync) << "cannot read the articles to compare:" << e.what();
        articles.clear();
    }
    return articles;
}

SyncJournal::Pending SyncJournal::pending(const SyncSnapshot &snapshot,
                                          const SyncPlan::Subscriptions &subscriptions,
                                          const SyncPlan::ReadStates &reads, const QList<RemoteFeed> &remote,
                                          const QDateTime &now)
{
    Pending pending{subscriptions.removeHere, subscriptions.addHere, {}, remote,
                    snapshot.agreed,          snapshot.lastChangeId, now};
    pending.readHere.reserve(reads.setHere.size());
    for (auto it = reads.setHere.cbegin(); it != reads.setHere.cend(); ++it)
        pending.readHere.append({it.key(), it.value()});
    return pending;
}

bool SyncJournal::applySome(Pending &pending, Applied &applied, const QDeadlineTimer &deadline)
{
    SqlTransaction transaction(m_db);
    const bool queueing =
        !m_db.select(QStringLiteral("SELECT 1 FROM sync_switch"), {}, "reading the sync switch").isEmpty();
    m_db.execute(QStringLiteral("DELETE FROM sync_switch"), {}, "pausing the sync queue");
    bool left = true;
    do {
        left = applyNext(pending, applied);
    } while (left && !deadline.hasExpired());
    if (!left)
        conclude(pending, queueing);
    if (queueing)
        m_db.execute(QStringLiteral("INSERT INTO sync_switch (name) VALUES ('queue')"), {},
                     "resuming the sync queue");
    transaction.commit();
    return !left;
}

bool SyncJournal::applyNext(Pending &pending, Applied &applied)
{
    qsizetype index = pending.done++;
    if (index < pending.removeHere.size()) {
        removeHere(pending.removeHere.at(index), applied);
        return true;
    }
    index -= pending.removeHere.size();
    if (index < pending.addHere.size()) {
        addHere(pending.addHere.at(index), pending.now, applied);
        return true;
    }
    index -= pending.addHere.size();
    if (index < pending.readHere.size()) {
        takeReadState(pending.readHere.at(index), pending.lastChangeId, applied);
        return true;
    }
    return false;
}

void SyncJournal::removeHere(qint32 id, Applied &applied)
{
    if (!m_subscriptions.remove(id))
        return;
    m_settings.removeSection(QStringLiteral("SubscriptionSpecifics_%1").arg(id));
    applied.removed.append(id);
}

void SyncJournal::addHere(const RemoteFeed &feed, const QDateTime &now, Applied &applied)
{
    if (m_subscriptions.findByUrl(feed.url))
        return;
    auto request = PropertyBag::create();
    request->setText(QStringLiteral("TITLE"), feed.title);
    request->setText(QStringLiteral("URL"), feed.url);
    request->setText(QStringLiteral("CATEGORY"), feed.category);
    applied.added.append(m_subscriptions.create(*request, now));
}

void SyncJournal::takeReadState(const std::pair<qint64, bool> &read, qint64 lastChangeId, Applied &applied)
{
    const auto &[id, isRead] = read;
    for (const auto &row : m_db.select(
             QStringLiteral("UPDATE articles SET is_read = ? WHERE id = ? AND is_read <> ? AND NOT EXISTS "
                            "(SELECT 1 FROM sync_changes WHERE article_id = ? AND id > ?)"
                            " RETURNING subscription_id"),
             {int(isRead), id, int(isRead), id, lastChangeId}, "taking the server's read state")) {
        ++applied.readChanged;
        applied.countsChanged.insert(row.at(0).toInt());
    }
}

void SyncJournal::conclude(const Pending &pending, bool queueing)
{
    m_db.execute(QStringLiteral("DELETE FROM sync_changes WHERE id <= ?"), {pending.lastChangeId},
                 "forgetting the changes sent");
    // Switched off during the run: nothing is agreed, the next run starts with a merge.
    if (queueing)
        remember(pending.remote, pending.agreed);
}

void SyncJournal::remember(const QList<RemoteFeed> &remote, const QHash<QString, QString> &agreed)
{
    QHash<QString, QString> now;
    QJsonArray rows;
    for (const RemoteFeed &feed : remote) {
        now.insert(feed.url, feed.id);
        rows.append(QJsonArray{feed.url, feed.id});
    }
    // Mostly what was agreed last time: then nothing is written.
    if (now == agreed)
        return;
    m_db.execute(QStringLiteral("DELETE FROM sync_feeds"), {}, "forgetting the synchronised feeds");
    m_db.execute(
        QStringLiteral("INSERT OR REPLACE INTO sync_feeds (url, remote_id) SELECT"
                       " json_extract(value, '$[0]'), json_extract(value, '$[1]') FROM json_each(?)"),
        {jsonArray(rows)}, "remembering the synchronised feeds");
}

} // namespace quillon
