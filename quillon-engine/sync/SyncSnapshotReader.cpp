#include "SyncSnapshotReader.h"

#include "EngineDatabase.h"

#include <iterator>

namespace quillon {

bool SyncSnapshotReader::readSome(const QDeadlineTimer &deadline)
{
    using Page = bool (SyncSnapshotReader::*)();
    static constexpr Page kSteps[] = {&SyncSnapshotReader::readQueue, &SyncSnapshotReader::readSubscriptions,
                                      &SyncSnapshotReader::readAgreed};
    try {
        do {
            if ((this->*kSteps[m_step])()) {
                m_after = {};
                if (++m_step == int(std::size(kSteps)))
                    return true;
            }
        } while (!deadline.hasExpired());
    } catch (const std::exception &e) {
        m_error = QString::fromLocal8Bit(e.what());
        return true;
    }
    return false;
}

bool SyncSnapshotReader::readQueue()
{
    // A read mark's feed is the one its article is in now; subscription changes name theirs.
    const auto rows = m_db.select(
        QStringLiteral(
            "SELECT c.id, c.kind, COALESCE(c.url, s.url), c.article_id FROM sync_changes c"
            " LEFT JOIN articles a ON a.id = c.article_id"
            " LEFT JOIN subscriptions s ON s.id = a.subscription_id WHERE c.id > ? ORDER BY c.id LIMIT ?"),
        {m_snapshot.lastChangeId, kPage}, "reading the sync queue");
    for (const auto &row : rows) {
        const QString kind = row.at(1).toString();
        const QString url = row.at(2).toString();
        if (kind == QLatin1String("subscribe")) {
            m_snapshot.subscribedHere.insert(url);
            m_snapshot.unsubscribedHere.remove(url);
        } else if (kind == QLatin1String("unsubscribe")) {
            m_snapshot.unsubscribedHere.insert(url);
            m_snapshot.subscribedHere.remove(url);
        } else {
            m_snapshot.readChangedHere.insert(row.at(3).toLongLong(), kind == QLatin1String("read"));
            m_snapshot.feedsChangedHere.insert(url);
        }
        m_snapshot.lastChangeId = row.at(0).toLongLong();
    }
    return rows.size() < kPage;
}

bool SyncSnapshotReader::readSubscriptions()
{
    const auto rows = m_db.select(
        QStringLiteral("SELECT id, url, title, category FROM subscriptions WHERE id > ? ORDER BY id LIMIT ?"),
        {m_after.toInt(), kPage}, "reading subscriptions to synchronise");
    if (rows.isEmpty())
        return true;
    // Counted on the index of read states, without reading the articles themselves.
    QHash<qint32, int> unread;
    for (const auto &row :
         m_db.select(QStringLiteral("SELECT subscription_id, SUM(is_read = 0) FROM articles"
                                    " WHERE subscription_id BETWEEN ? AND ? GROUP BY subscription_id"),
                     {rows.first().at(0), rows.last().at(0)}, "counting articles to synchronise"))
        unread.insert(row.at(0).toInt(), row.at(1).toInt());
    for (const auto &row : rows) {
        const LocalSubscription local{row.at(0).toInt(), row.at(1).toString(), row.at(2).toString(),
                                      row.at(3).toString()};
        if (const auto count = unread.constFind(local.id); count != unread.cend())
            m_snapshot.unreadByFeed[local.url] += *count;
        m_snapshot.subscriptions.append(local);
    }
    m_after = rows.last().at(0);
    return rows.size() < kPage;
}

bool SyncSnapshotReader::readAgreed()
{
    const auto rows = m_db.select(
        QStringLiteral("SELECT url, remote_id FROM sync_feeds WHERE url > ? ORDER BY url LIMIT ?"),
        {m_after.toString(), kPage}, "reading the synchronised feeds");
    for (const auto &row : rows)
        m_snapshot.agreed.insert(row.at(0).toString(), row.at(1).toString());
    if (!rows.isEmpty())
        m_after = rows.last().at(0);
    return rows.size() < kPage;
}

} // namespace quillon
