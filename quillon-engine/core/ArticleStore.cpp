#include "ArticleStore.h"

#include "EngineDatabase.h"
#include "ItemBags.h"
#include "SubscriptionFields.h"

#include <QHash>
#include <QStringEncoder>

namespace quillon {

namespace {
// Written by hand: QJsonDocument cost more than the look-up the array is for.
QString jsonArray(const QStringList &texts)
{
    QString json(1, QLatin1Char('['));
    for (const QString &text : texts) {
        if (json.size() > 1)
            json += QLatin1Char(',');
        json += QLatin1Char('"');
        qsizetype run = 0;
        for (qsizetype i = 0; i < text.size(); ++i) {
            const char16_t c = text.at(i).unicode();
            if (c >= 0x20 && c != u'"' && c != u'\\')
                continue;
            json.append(QStringView(text).sliced(run, i - run));
            json += c >= 0x20 ? QStringLiteral("\\") + QChar(c)
                              : QStringLiteral("\\u%1").arg(int(c), 4, 16, QLatin1Char('0'));
            run = i + 1;
        }
        json.append(QStringView(text).sliced(run));
        json += QLatin1Char('"');
    }
    return json + QLatin1Char(']');
}

QDateTime dateOf(const QVariant &column)
{
    return column.isNull() ? QDateTime() : QDateTime::fromString(column.toString(), Qt::ISODate);
}
} // namespace

ArticleStore::Stored ArticleStore::store(qint32 subscriptionId, const ParsedFeed &feed, bool complete,
                                         const QDateTime &now)
{
    QStringList keys;
    keys.reserve(feed.items.size());
    for (const ParsedItem &item : feed.items)
        keys.append(Article::keyOf(item));
    // One look-up for the whole feed: most fetches bring nothing new.
    Known known = knownKeys(subscriptionId, keys);
    Stored stored;
    const QString fetchedAt = SubscriptionFields::isoDate(now);
    const QByteArray fetchedAtUtf8 = fetchedAt.toUtf8();
    for (qsizetype i = 0; i < feed.items.size(); ++i) {
        if (known.keys.contains(keys.at(i)))
            continue;
        known.keys.insert(keys.at(i)); // a feed that repeats an item stores it once
        const Article article = Article::fromParsed(feed.items.at(i));
        if (const qint64 articleId = insert(subscriptionId, article, fetchedAtUtf8)) {
            if (const auto oldest = m_oldest.find(subscriptionId);
                oldest != m_oldest.end() && fetchedAt < *oldest)
                *oldest = fetchedAt; // a clock set back
            ++stored.added;
            stored.newEnclosures += insertEnclosures(articleId, article.enclosures);
        }
    }
    // The first articles of a subscription are its oldest: no look for them at the age check.
    if (known.stored == 0 && stored.added > 0)
        m_oldest.insert(subscriptionId, fetchedAt);
    if (complete && known.anyPurged)
        forgetPurgedKeysNotIn(subscriptionId, jsonArray(keys));
    return stored;
}

// Most subscriptions hold a few dozen keys: reading them all costs a fraction of looking the
// feed's keys up, which a subscription with a long history still gets.
ArticleStore::Known ArticleStore::knownKeys(qint32 subscriptionId, const QStringList &keys)
{
    const qsizetype most = 100 + 2 * keys.size();
    const auto all = m_db.select(QStringLiteral("SELECT guid, 0 FROM articles WHERE subscription_id = ?1"
                                                " UNION ALL SELECT guid, 1 FROM purged_articles"
                                                " WHERE subscription_id = ?1 LIMIT ?2"),
                                 {subscriptionId, most + 1}, "reading stored keys");
    Known known;
    if (all.size() <= most) {
        known.anyPurged = false;
        known.stored = 0;
        for (const auto &row : all) {
            known.keys.insert(row.at(0).toString());
            if (row.at(1).toInt() != 0)
                known.anyPurged = true;
            else
                ++known.stored;
        }
        return known;
    }
    const QString keysJson = jsonArray(keys);
    const auto rows =
        m_db.select(QStringLiteral("SELECT guid FROM articles WHERE subscription_id = ?"
                                   " AND guid IN (SELECT value FROM json_each(?))"
                                   " UNION ALL SELECT guid FROM purged_articles WHERE subscription_id = ?"
                                   " AND guid IN (SELECT value FROM json_each(?))"),
                    {subscriptionId, keysJson, subscriptionId, keysJson}, "looking up stored articles");
    for (const auto &row : rows)
        known.keys.insert(row.at(0).toString());
    return known;
}

qint64 ArticleStore::insert(qint32 subscriptionId, const Article &article, const QByteArray &fetchedAt)
{
    const QString published =
        article.published.isValid() ? SubscriptionFields::isoDate(article.published) : QString();
    const QString updated =
        article.updated.isValid() ? SubscriptionFields::isoDate(article.updated) : QString();
    const QString *texts[] = {&article.key,  &article.subject, &article.url, &article.author,
                              &article.body, &published,       &updated};
    // The texts go to SQLite in UTF-8, one after another in a buffer kept from article to
    // article: five allocations an article fewer.
    qsizetype bound = 0;
    for (const QString *text : texts)
        bound += text->size() * 3;
    if (m_utf8.size() < bound)
        m_utf8.resize(bound);
    QStringEncoder encoder(QStringEncoder::Utf8, QStringConverter::Flag::Stateless);
    char *out = m_utf8.data();
    const auto utf8 = [&encoder, &out](const QString &text) {
        char *const begin = out;
        out = encoder.appendToBuffer(out, text);
        return QByteArrayView(begin, out - begin);
    };
    const QByteArrayView key = utf8(article.key), subject = utf8(article.subject), url = utf8(article.url),
                         author = utf8(article.author), body = utf8(article.body);
    // Empty texts stay texts, as everywhere else in the store; only missing dates are NULL.
    const auto dateOrNull = [&utf8](const QString &date) {
        return date.isNull() ? EngineDatabase::RawValue() : EngineDatabase::RawValue(utf8(date));
    };
    const auto id = m_db.insertIfNewRaw(
        "INSERT INTO articles (subscription_id, guid, title, link, author, body, published,"
        " updated, fetched_at) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"
        " ON CONFLICT (subscription_id, guid) DO NOTHING",
        {qint64(subscriptionId), key, subject, url, author, body, dateOrNull(published), dateOrNull(updated),
         QByteArrayView(fetchedAt)},
        "storing an article");
    return id.value_or(0);
}

int ArticleStore::insertEnclosures(qint64 articleId, const QList<ParsedEnclosure> &enclosures)
{
    int position = 0;
    for (const ParsedEnclosure &enclosure : enclosures) {
        if (enclosure.url.trimmed().isEmpty())
            continue;
        m_db.execute(QStringLiteral("INSERT INTO article_enclosures (article_id, position, url, type, length)"
                                    " VALUES (?, ?, ?, ?, ?)"),
                     {articleId, position++, enclosure.url.trimmed(), enclosure.type,
                      enclosure.length >= 0 ? QVariant(enclosure.length) : QVariant()},
                     "storing an enclosure");
    }
    return position;
}

void ArticleStore::forgetPurgedKeysNotIn(qint32 subscriptionId, const QString &keysJson)
{
    m_db.execute(QStringLiteral("DELETE FROM purged_articles WHERE subscription_id = ?"
                                " AND guid NOT IN (SELECT value FROM json_each(?))"),
                 {subscriptionId, keysJson}, "forgetting deleted articles");
}

int ArticleStore::purge(qint32 subscriptionId, const QDateTime &readCutoff, const QDateTime &unreadCutoff)
{
    if (!readCutoff.isValid() && !unreadCutoff.isValid())
        return 0;
    // No stored date sorts before the empty text, so an invalid cut-off matches nothing.
    const QString kept;
    const QVariantList binds = {subscriptionId,
                                readCutoff.isValid() ? SubscriptionFields::isoDate(readCutoff) : kept,
                                unreadCutoff.isValid() ? SubscriptionFields::isoDate(unreadCutoff) : kept};
    // Most updates find nothing old enough; the dates are ISO texts, so they compare as texts.
    const QString oldest = oldestStored(subscriptionId);
    if (oldest.isEmpty() || (oldest >= binds.at(1).toString() && oldest >= binds.at(2).toString()))
        return 0;
    // One pass: the deleted keys come back and are remembered only when there are any.
    const auto deleted = m_db.select(
        QStringLiteral(
            "DELETE FROM articles WHERE subscription_id = ?"
            " AND ((is_read = 1 AND fetched_at < ?) OR (is_read = 0 AND fetched_at < ?)) RETURNING guid"),
        binds, "deleting old articles");
    m_oldest.remove(subscriptionId); // looked up again next time
    if (deleted.isEmpty())
        return 0;
    QStringList keys;
    keys.reserve(deleted.size());
    for (const auto &row : deleted)
        keys.append(row.at(0).toString());
    m_db.execute(QStringLiteral("INSERT OR IGNORE INTO purged_articles (subscription_id, guid)"
                                " SELECT ?, value FROM json_each(?)"),
                 {subscriptionId, jsonArray(keys)}, "remembering deleted articles");
    return int(deleted.size());
}

Article ArticleStore::fromColumns(const QVariantList &row, qsizetype first)
{
    Article article;
    article.key = row.at(first).toString();
    article.subject = row.at(first + 1).toString();
    article.url = row.at(first + 2).toString();
    article.author = row.at(first + 3).toString();
    article.body = row.at(first + 4).toString();
    article.published = dateOf(row.at(first + 5));
    article.updated = dateOf(row.at(first + 6));
    return article;
}

QString ArticleStore::oldestStored(qint32 subscriptionId)
{
    if (const auto known = m_oldest.constFind(subscriptionId); known != m_oldest.cend())
        return *known;
    const auto rows =
        m_db.select(QStringLiteral("SELECT MIN(fetched_at) FROM articles WHERE subscription_id = ?"),
                    {subscriptionId}, "finding the oldest article");
    // No articles: nothing to delete until one is stored, which needs no entry (a null text).
    const QString oldest =
        rows.isEmpty() || rows.first().at(0).isNull() ? QString() : rows.first().at(0).toString();
    if (!oldest.isEmpty())
        m_oldest.insert(subscriptionId, oldest);
    return oldest;
}

ListPtr ArticleStore::itemBags(qint32 subscriptionId)
{
    const auto enclosures = enclosuresOf(subscriptionId);
    const auto rows = m_db.select(
        QStringLiteral("SELECT id, guid, title, link, author, body, published, updated, is_read FROM articles"
                       " WHERE subscription_id = ? ORDER BY COALESCE(published, fetched_at) DESC, id DESC"),
        {subscriptionId}, "reading articles");
    auto list = PropertyList::create();
    for (const auto &row : rows) {
        Article article = fromColumns(row, 1);
        article.enclosures = enclosures.value(row.at(0).toLongLong());
        BagPtr bag = ItemBags::item(article);
        bag->setLong(QStringLiteral("READ"), row.at(8).toInt() != 0 ? 1 : 0);
        list->append(bag);
    }
    return list;
}

QHash<qint64, QList<ParsedEnclosure>> ArticleStore::enclosuresOf(qint32 subscriptionId)
{
    QHash<qint64, QList<ParsedEnclosure>> byArticle;
    const auto rows = m_db.select(
        QStringLiteral("SELECT e.article_id, e.url, e.type, e.length, e.file FROM article_enclosures e"
                       " JOIN articles a ON a.id = e.article_id WHERE a.subscription_id = ?"
                       " ORDER BY e.article_id, e.position"),
        {subscriptionId}, "reading enclosures");
    for (const auto &row : rows) {
        ParsedEnclosure enclosure;
        enclosure.url = row.at(1).toString();
        enclosure.type = row.at(2).toString();
        enclosure.length = row.at(3).isNull() ? -1 : row.at(3).toLongLong();
        enclosure.file = row.at(4).toString();
        byArticle[row.at(0).toLongLong()].append(enclosure);
    }
    return byArticle;
}

} // namespace quillon
