#pragma once

#include "Article.h"
#include "ParsedFeed.h"
#include "PropertyBag.h"

#include <QDateTime>

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
    // Deletes the read (or unread) articles stored before the cut-off; returns how many went.
    int purgeOlderThan(qint32 subscriptionId, bool read, const QDateTime &cutoff);
    // One item bag per article (ItemBags), newest first, each with "READ" 1 or 0.
    [[nodiscard]] ListPtr itemBags(qint32 subscriptionId);

private:
    // The new article's row id, or 0 when it was stored already.
    [[nodiscard]] qint64 insert(qint32 subscriptionId, const Article &article, const QString &fetchedAt);
    int insertEnclosures(qint64 articleId, const QList<ParsedEnclosure> &enclosures);
    void forgetPurgedKeysNotIn(qint32 subscriptionId, const QStringList &keys);
    [[nodiscard]] QHash<qint64, QList<ParsedEnclosure>> enclosuresOf(qint32 subscriptionId);

    EngineDatabase &m_db;
};

} // namespace quillon
