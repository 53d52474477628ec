#pragma once

#include "BindingRule.h"

#include <QDateTime>
#include <QList>
#include <QString>

namespace quillon {

class EngineDatabase;

// Which subscriptions each consumer receives, and which articles it has received.
class BindingStore
{
public:
    explicit BindingStore(EngineDatabase &db) : m_db(db) {}

    [[nodiscard]] BindingRule::State state(const QString &consumerId, qint32 subscriptionId);
    // byAdd marks the binding as awaiting the add's confirming BindItem.
    void bind(const QString &consumerId, qint32 subscriptionId, bool byAdd, const QDateTime &now);
    void confirm(const QString &consumerId, qint32 subscriptionId);
    void unbind(const QString &consumerId, qint32 subscriptionId);
    void dropDelivered(const QString &consumerId, qint32 subscriptionId);
    // In ID order.
    [[nodiscard]] QList<qint32> subscriptionsOf(const QString &consumerId);

private:
    EngineDatabase &m_db;
};

} // namespace quillon
