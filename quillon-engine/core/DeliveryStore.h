#pragma once

#include "PropertyBag.h"

#include <QDateTime>
#include <QList>
#include <QString>

#include <utility>

namespace quillon {

class EngineDatabase;

// What each delivering consumer still has to store or take away: articles of its bound
// subscriptions without a delivered mark (for the media consumer, every article with an
// enclosure), and removals the schema's triggers recorded.
class DeliveryStore
{
public:
    struct Counts
    {
        QString consumerId;
        qint32 pending = 0;
        qint32 removals = 0;
    };

    // Receives the articles with enclosures of every subscription, bound or not.
    static constexpr const char *kMediaConsumer = "MEDIACONSUMER";

    explicit DeliveryStore(EngineDatabase &db) : m_db(db) {}
    static inline const QString kDeliveryStatusKey = QStringLiteral("DeliveryStatus");

    [[nodiscard]] static bool receivesEverySubscription(const QString &consumerId);

    // Up to limit item bags (ItemBags) in article order, each with "ARTICLEID",
    // "SUBSCRIPTIONID" and "READ"; subscriptionId 0 means every bound subscription.
    [[nodiscard]] ListPtr pending(const QString &consumerId, qint32 subscriptionId, int limit,
                                  qint64 afterId = 0);
    // Marks the articles delivered, those of subscriptions bound to the consumer only.
    // Returns how many were newly marked.
    int acknowledge(const QString &consumerId, const QList<qint64> &articleIds, const QDateTime &now);
    struct ReadChange
    {
        int count = 0;               // articles whose state changed
        QList<qint32> subscriptions; // whose counts changed with them
    };
    // The consumer that set them has them in its store already: none of its read marks stay.
    ReadChange setRead(const QString &consumerId, const QList<qint64> &articleIds, bool read);
    // Marks set elsewhere on articles the consumer received, in order of change: bags of
    // "MARKID", "ARTICLEID", "SUBSCRIPTIONID", "READ".
    [[nodiscard]] ListPtr readMarks(const QString &consumerId, int limit);
    int confirmReadMarks(const QString &consumerId, qint64 upToMarkId);
    // How many read marks wait, by consumer.
    [[nodiscard]] QList<std::pair<QString, int>> readMarksWaiting();
    // Bags of "ARTICLEID", "SUBSCRIPTIONID", "GUID", oldest first.
    [[nodiscard]] ListPtr removals(const QString &consumerId, int limit);
    int confirmRemovals(const QString &consumerId, const QList<qint64> &articleIds);
    // Records where the article's enclosure with this address was stored; "" forgets it.
    // Returns how many enclosures changed.
    int setEnclosureFile(qint64 articleId, const QString &url, const QString &file);
    // Why the consumer cannot store a subscription's articles; empty once it can again.
    void setDeliveryStatus(const QString &consumerId, qint32 subscriptionId, const QString &status);
    // Per consumer bound to the subscription, what waits for it there; withMedia adds the
    // media consumer's pending articles.
    [[nodiscard]] QList<Counts> waiting(qint32 subscriptionId, bool withMedia);

private:
    EngineDatabase &m_db;
};

} // namespace quillon
