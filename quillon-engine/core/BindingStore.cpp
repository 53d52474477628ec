#include "BindingStore.h"

#include "EngineDatabase.h"
#include "SubscriptionFields.h"

namespace quillon {

BindingRule::State BindingStore::state(const QString &consumerId, qint32 subscriptionId)
{
    const auto rows = m_db.select(QStringLiteral("SELECT awaiting_confirmation FROM bindings"
                                                 " WHERE consumer_id = ? AND subscription_id = ?"),
                                  {consumerId, subscriptionId}, "reading a binding");
    if (rows.isEmpty())
        return BindingRule::State::Unbound;
    return rows.first().value(0).toInt() != 0 ? BindingRule::State::AwaitingConfirmation
                                              : BindingRule::State::Bound;
}

void BindingStore::bind(const QString &consumerId, qint32 subscriptionId, bool byAdd, const QDateTime &now)
{
    m_db.execute(
        QStringLiteral("INSERT INTO bindings (consumer_id, subscription_id, awaiting_confirmation, bound_at)"
                       " VALUES (?, ?, ?, ?) ON CONFLICT (consumer_id, subscription_id)"
                       " DO UPDATE SET awaiting_confirmation = excluded.awaiting_confirmation"),
        {consumerId, subscriptionId, byAdd ? 1 : 0, SubscriptionFields::isoDate(now)}, "binding");
}

void BindingStore::confirm(const QString &consumerId, qint32 subscriptionId)
{
    m_db.execute(QStringLiteral("UPDATE bindings SET awaiting_confirmation = 0"
                                " WHERE consumer_id = ? AND subscription_id = ?"),
                 {consumerId, subscriptionId}, "confirming a binding");
}

void BindingStore::unbind(const QString &consumerId, qint32 subscriptionId)
{
    m_db.execute(QStringLiteral("DELETE FROM bindings WHERE consumer_id = ? AND subscription_id = ?"),
                 {consumerId, subscriptionId}, "unbinding");
}

void BindingStore::dropDelivered(const QString &consumerId, qint32 subscriptionId)
{
    m_db.execute(QStringLiteral("DELETE FROM delivered_articles WHERE consumer_id = ? AND article_id IN"
                                " (SELECT id FROM articles WHERE subscription_id = ?)"),
                 {consumerId, subscriptionId}, "dropping delivered articles");
}

QList<qint32> BindingStore::subscriptionsOf(const QString &consumerId)
{
    QList<qint32> ids;
    const auto rows = m_db.select(
        QStringLiteral("SELECT subscription_id FROM bindings WHERE consumer_id = ? ORDER BY subscription_id"),
        {consumerId}, "listing a consumer's subscriptions");
    for (const auto &row : rows)
        ids.append(row.value(0).toInt());
    return ids;
}

} // namespace quillon
