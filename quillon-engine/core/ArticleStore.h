#pragma once

#include "Article.h"
#include "ParsedFeed.h"
#include "PropertyBag.h"

#include <QDateTime>
#include <QHash>
#include <QSet>

namespace quillon {

class EngineDatabase;

// The articles of each subscription. An article is stored once, under its key (Article).
class ArticleStore
{
public:
    struct Stored
    {
        int added = 0;
        int newEnclosures = 0;
    };

    explicit ArticleStore(EngineDatabase &db) : m_db(db) {}

    // Adds the items not stored yet, nor deleted for their age while the feed still offers
    // them. complete: the feed was read to its end, so deleted keys it no longer offers are
    // forgotten.
    Stored store(qint32 subscriptionId, const ParsedFeed &feed, bool complete, const QDateTime &now);
    // Deletes read articles stored before readCutoff and unread ones stored before
    // unreadCutoff; an invalid cut-off keeps them all. Returns how many went. Skips the
    // database when the oldest article this store knows of is newer than both cut-offs.
    int purge(qint32 subscriptionId, const QDateTime &readCutoff, const QDateTime &unreadCutoff);
    // One item bag per article (ItemBags), newest first, each with "READ" 1 or 0.
    [[nodiscard]] ListPtr itemBags(qint32 subscriptionId);
    // An article from the columns guid, title, link, author, body, published, updated of a
    // row, starting at first.
    [[nodiscard]] static Article fromColumns(const QVariantList &row, qsizetype first);

private:
    // The new article's row id, or 0 when it was stored already.
    [[nodiscard]] qint64 insert(qint32 subscriptionId, const Article &article, const QByteArray &fetchedAt);
    int insertEnclosures(qint64 articleId, const QList<ParsedEnclosure> &enclosures);
    struct Known
    {
        QSet<QString> keys;    // stored or deleted for their age already; at least those of the feed
        bool anyPurged = true; // false only when the subscription is known to hold no deleted keys
        qsizetype stored = -1; // articles the subscription holds, when they were all read
    };
    [[nodiscard]] Known knownKeys(qint32 subscriptionId, const QStringList &keys);
    void forgetPurgedKeysNotIn(qint32 subscriptionId, const QString &keysJson);
    [[nodiscard]] QHash<qint64, QList<ParsedEnclosure>> enclosuresOf(qint32 subscriptionId);

    [[nodiscard]] QString oldestStored(qint32 subscriptionId);

    EngineDatabase &m_db;
    // When each subscription's oldest article was stored, as far as this store has seen. It
    // only errs towards older (articles deleted elsewhere), which costs a look, never a miss.
    QHash<qint32, QString> m_oldest;
    QByteArray m_utf8; // an article's texts on their way to SQLite
};

} // namespace quillon
