#include "SubscriptionChanges.h"

#include "CoreLogging.h"
#include "EngineMessages.h"
#include "SubscriptionStore.h"

namespace quillon {

void SubscriptionChanges::afterUpdate(qint32 subscriptionId)
{
    bool changed = false;
    if (remember(subscriptionId, &changed) && changed)
        announce({subscriptionId});
}

void SubscriptionChanges::afterStatus(qint32 subscriptionId, const QString &status)
{
    const auto known = m_announced.find(subscriptionId);
    if (known == m_announced.end() || status.isEmpty()) {
        afterUpdate(subscriptionId);
        return;
    }
    if (known->status == status)
        return;
    known->status = status;
    announce({subscriptionId});
}

void SubscriptionChanges::countsChanged(const QList<qint32> &subscriptionIds)
{
    QList<qint32> known;
    for (const qint32 id : subscriptionIds) {
        if (remember(id))
            known.append(id);
    }
    if (!known.isEmpty())
        announce(known);
}

bool SubscriptionChanges::remember(qint32 subscriptionId, bool *changed)
{
    std::optional<SubscriptionStore::Summary> now;
    try {
        now = m_subscriptions.summary(subscriptionId);
    } catch (const std::exception &e) {
        qCWarning(lcCore) << "cannot read subscription" << subscriptionId << e.what();
    }
    if (!now) {
        m_announced.remove(subscriptionId);
        return false;
    }
    const auto found = m_announced.constFind(subscriptionId);
    if (changed)
        *changed = found == m_announced.constEnd() || !(*found == *now);
    m_announced.insert(subscriptionId, *now);
    return true;
}

void SubscriptionChanges::announce(const QList<qint32> &subscriptionIds)
{
    auto ids = PropertyList::create();
    for (const qint32 id : subscriptionIds)
        ids->append(id);
    auto payload = PropertyBag::create();
    payload->setLong(QStringLiteral("SUBSCRIPTIONID"), subscriptionIds.first());
    payload->set(QStringLiteral("SUBSCRIPTIONIDS"), ids);
    m_messenger.toConnected(EngineMessages::message(QStringLiteral("SubscriptionChanged"), payload));
}

} // namespace quillon
