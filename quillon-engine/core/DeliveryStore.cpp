#include "DeliveryStore.h"

#include "ArticleStore.h"
#include "EngineDatabase.h"
#include "ItemBags.h"
#include "SubscriptionFields.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>

namespace quillon {

namespace {
QString idsJson(const QList<qint64> &ids)
{
    QJsonArray array;
    for (const qint64 id : ids)
        array.append(id);
    return QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Compact));
}

const QString kPendingFrom =
    QStringLiteral(" FROM articles a JOIN bindings b ON b.subscription_id = a.subscription_id"
                   " AND b.consumer_id = ?"
                   " WHERE NOT EXISTS (SELECT 1 FROM delivered_articles d"
                   " WHERE d.consumer_id = b.consumer_id AND d.article_id = a.id)");
// The media consumer is bound to nothing: it receives every article with an enclosure.
const QString kMediaPendingFrom = QStringLiteral(
    " FROM articles a WHERE EXISTS (SELECT 1 FROM article_enclosures e WHERE e.article_id = a.id)"
    " AND NOT EXISTS (SELECT 1 FROM delivered_articles d"
    " WHERE d.consumer_id = ? AND d.article_id = a.id)");
} // namespace

bool DeliveryStore::receivesEverySubscription(const QString &consumerId)
{
    return consumerId.compare(QLatin1String(kMediaConsumer), Qt::CaseInsensitive) == 0;
}

ListPtr DeliveryStore::pending(const QString &consumerId, qint32 subscriptionId, int limit, qint64 afterId)
{
    // The batch's IDs are chosen from the indexes alone, and only its own rows are read: sorting
    // every waiting article's row to keep the first few made each batch cost all that waited.
    const auto rows = m_db.select(
        QStringLiteral("SELECT a.id, a.subscription_id, a.guid, a.title, a.link, a.author, a.body,"
                       " a.published, a.updated, a.is_read FROM articles a WHERE a.id IN (SELECT a.id") +
            (receivesEverySubscription(consumerId) ? kMediaPendingFrom : kPendingFrom) +
            QStringLiteral(" AND (? = 0 OR a.subscription_id = ?) AND a.id > ? ORDER BY a.id LIMIT ?)"
                           " ORDER BY a.id"),
        {consumerId, subscriptionId, subscriptionId, afterId, limit}, "listing articles to deliver");
    QList<qint64> ids;
    for (const auto &row : rows)
        ids.append(row.at(0).toLongLong());
    QHash<qint64, QList<ParsedEnclosure>> enclosures;
    const auto enclosureRows = m_db.select(
        QStringLiteral("SELECT article_id, url, type, length, file FROM article_enclosures"
                       " WHERE article_id IN (SELECT value FROM json_each(?)) ORDER BY article_id, position"),
        {idsJson(ids)}, "reading enclosures to deliver");
    for (const auto &row : enclosureRows)
        enclosures[row.at(0).toLongLong()].append({row.at(1).toString(), row.at(2).toString(),
                                                   row.at(3).isNull() ? -1 : row.at(3).toLongLong(),
                                                   row.at(4).toString()});

    auto list = PropertyList::create();
    for (const auto &row : rows) {
        Article article = ArticleStore::fromColumns(row, 2);
        article.enclosures = enclosures.value(row.at(0).toLongLong());
        BagPtr bag = ItemBags::item(article);
        bag->setLong(QStringLiteral("ARTICLEID"), qint32(row.at(0).toLongLong()));
        bag->setLong(QStringLiteral("SUBSCRIPTIONID"), row.at(1).toInt());
        bag->setLong(QStringLiteral("READ"), row.at(9).toInt() != 0 ? 1 : 0);
        list->append(bag);
    }
    return list;
}

int DeliveryStore::acknowledge(const QString &consumerId, const QList<qint64> &articleIds,
                               const QDateTime &now)
{
    if (receivesEverySubscription(consumerId))
        return m_db.execute(
            QStringLiteral(
                "INSERT OR IGNORE INTO delivered_articles (consumer_id, article_id, delivered_at)"
                " SELECT ?, a.id, ? FROM articles a WHERE a.id IN (SELECT value FROM json_each(?))"),
            {consumerId, SubscriptionFields::isoDate(now), idsJson(articleIds)},
            "marking articles delivered");
    // Led by the IDs given: led by the bindings, every article of every bound subscription was looked at.
    return m_db.execute(
        QStringLiteral(
            "INSERT OR IGNORE INTO delivered_articles (consumer_id, article_id, delivered_at)"
            " SELECT b.consumer_id, a.id, ? FROM json_each(?) j CROSS JOIN articles a ON a.id = j.value"
            " JOIN bindings b ON b.subscription_id = a.subscription_id AND b.consumer_id = ?"),
        {SubscriptionFields::isoDate(now), idsJson(articleIds), consumerId}, "marking articles delivered");
}

DeliveryStore::ReadChange DeliveryStore::setRead(const QString &consumerId, const QList<qint64> &articleIds,
                                                 bool read)
{
    const QVariantList binds{read ? 1 : 0, idsJson(articleIds)};
    ReadChange change;
    const auto rows =
        m_db.select(QStringLiteral("SELECT DISTINCT subscription_id FROM articles WHERE is_read <> ?"
                                   " AND id IN (SELECT value FROM json_each(?))"),
                    binds, "finding subscriptions whose counts change");
    for (const auto &row : rows)
        change.subscriptions.append(row.at(0).toInt());
    change.count = m_db.execute(QStringLiteral("UPDATE articles SET is_read = ? WHERE is_read <> ?"
                                               " AND id IN (SELECT value FROM json_each(?))"),
                                {binds.at(0), binds.at(0), binds.at(1)}, "marking articles read");
    m_db.execute(QStringLiteral("DELETE FROM delivery_read_marks WHERE consumer_id = ?"
                                " AND article_id IN (SELECT value FROM json_each(?))"),
                 {consumerId, binds.at(1)}, "forgetting the consumer's own read marks");
    return change;
}

ListPtr DeliveryStore::readMarks(const QString &consumerId, int limit)
{
    const auto rows = m_db.select(QStringLiteral("SELECT id, article_id, subscription_id, is_read"
                                                 " FROM delivery_read_marks WHERE consumer_id = ?"
                                                 " ORDER BY id LIMIT ?"),
                                  {consumerId, limit}, "listing read marks to deliver");
    auto list = PropertyList::create();
    for (const auto &row : rows) {
        auto bag = PropertyBag::create();
        bag->setLong(QStringLiteral("MARKID"), qint32(row.at(0).toLongLong()));
        bag->setLong(QStringLiteral("ARTICLEID"), qint32(row.at(1).toLongLong()));
        bag->setLong(QStringLiteral("SUBSCRIPTIONID"), row.at(2).toInt());
        bag->setLong(QStringLiteral("READ"), row.at(3).toInt() != 0 ? 1 : 0);
        list->append(bag);
    }
    return list;
}

int DeliveryStore::confirmReadMarks(const QString &consumerId, qint64 upToMarkId)
{
    return m_db.execute(QStringLiteral("DELETE FROM delivery_read_marks WHERE consumer_id = ? AND id <= ?"),
                        {consumerId, upToMarkId}, "confirming read marks");
}

QList<std::pair<QString, int>> DeliveryStore::readMarksWaiting()
{
    QList<std::pair<QString, int>> waiting;
    for (const auto &row : m_db.select(QStringLiteral("SELECT consumer_id, COUNT(*) FROM delivery_read_marks"
                                                      " GROUP BY consumer_id"),
                                       {}, "counting read marks to deliver"))
        waiting.append({row.at(0).toString(), row.at(1).toInt()});
    return waiting;
}

ListPtr DeliveryStore::removals(const QString &consumerId, int limit)
{
    const auto rows =
        m_db.select(QStringLiteral("SELECT article_id, subscription_id, guid FROM delivery_removals"
                                   " WHERE consumer_id = ? ORDER BY article_id LIMIT ?"),
                    {consumerId, limit}, "listing articles to remove");
    auto list = PropertyList::create();
    for (const auto &row : rows) {
        auto bag = PropertyBag::create();
        bag->setLong(QStringLiteral("ARTICLEID"), qint32(row.at(0).toLongLong()));
        bag->setLong(QStringLiteral("SUBSCRIPTIONID"), row.at(1).toInt());
        bag->setText(QStringLiteral("GUID"), row.at(2).toString());
        list->append(bag);
    }
    return list;
}

int DeliveryStore::confirmRemovals(const QString &consumerId, const QList<qint64> &articleIds)
{
    return m_db.execute(QStringLiteral("DELETE FROM delivery_removals WHERE consumer_id = ?"
                                       " AND article_id IN (SELECT value FROM json_each(?))"),
                        {consumerId, idsJson(articleIds)}, "confirming removals");
}

int DeliveryStore::setEnclosureFile(qint64 articleId, const QString &url, const QString &file)
{
    return m_db.execute(
        QStringLiteral("UPDATE article_enclosures SET file = ? WHERE article_id = ? AND url = ?"),
        {file.isEmpty() ? QVariant() : QVariant(file), articleId, url}, "recording an enclosure's file");
}

void DeliveryStore::setDeliveryStatus(const QString &consumerId, qint32 subscriptionId, const QString &status)
{
    // Kept beside the consumer's other settings of the subscription, so it goes with them.
    const QString section = QStringLiteral("SubscriptionSpecifics_%1").arg(subscriptionId);
    if (status.isEmpty())
        m_db.execute(QStringLiteral("DELETE FROM settings WHERE consumer_id = ? AND section = ? AND key = ?"),
                     {consumerId, section, kDeliveryStatusKey}, "clearing a delivery status");
    else
        m_db.execute(QStringLiteral("INSERT OR REPLACE INTO settings (consumer_id, section, key, value)"
                                    " VALUES (?, ?, ?, ?)"),
                     {consumerId, section, kDeliveryStatusKey, status}, "recording a delivery status");
}

// Run after every update that stored articles. The three counts' rows never coincide (bound
// consumers, unbound ones, the media consumer's pending count), so they are not merged: no
// temporary table. The media consumer's count is skipped unless asked for (?3), before a row is
// read.
QList<DeliveryStore::Counts> DeliveryStore::waiting(qint32 subscriptionId, bool withMedia)
{
    const auto rows = m_db.select(
        QStringLiteral("SELECT b.consumer_id,"
                       " (SELECT COUNT(*) FROM articles a WHERE a.subscription_id = b.subscription_id"
                       "  AND NOT EXISTS (SELECT 1 FROM delivered_articles d"
                       "  WHERE d.consumer_id = b.consumer_id AND d.article_id = a.id)),"
                       " (SELECT COUNT(*) FROM delivery_removals r WHERE r.consumer_id = b.consumer_id"
                       "  AND r.subscription_id = b.subscription_id)"
                       " FROM bindings b WHERE b.subscription_id = ?1"
                       " UNION ALL SELECT r.consumer_id, 0, COUNT(*) FROM delivery_removals r"
                       " WHERE r.subscription_id = ?1 AND NOT EXISTS (SELECT 1 FROM bindings b"
                       " WHERE b.consumer_id = r.consumer_id AND b.subscription_id = r.subscription_id)"
                       " GROUP BY r.consumer_id"
                       " UNION ALL SELECT ?2, COUNT(*), 0 FROM articles a WHERE ?3 AND a.subscription_id = ?1"
                       " AND EXISTS (SELECT 1 FROM article_enclosures e WHERE e.article_id = a.id)"
                       " AND NOT EXISTS (SELECT 1 FROM delivered_articles d"
                       " WHERE d.consumer_id = ?2 AND d.article_id = a.id)"),
        {subscriptionId, QLatin1String(kMediaConsumer), withMedia}, "counting what waits for delivery");
    QList<Counts> counts;
    for (const auto &row : rows)
        counts.append({row.at(0).toString(), row.at(1).toInt(), row.at(2).toInt()});
    return counts;
}

} // namespace quillon
