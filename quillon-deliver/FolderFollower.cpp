#include "FolderFollower.h"

#include "DeliveryLogging.h"
#include "ItemClass.h"

QList<FolderFollower::Move> FolderFollower::follow(MailStore &store, const PlaceOf &placeOf)
{
    QList<Move> moves;
    const FolderDefaults defaults = m_settings.defaults();
    const QList<qint32> bound = m_settings.boundSubscriptions();
    for (const qint32 id : m_index.subscriptions()) {
        const auto current = m_index.folderOf(id);
        const SubscriptionPlace *place = placeOf(id);
        if (!place) {
            // Deleted in ConfigConsumer: "SubDeletedInConfig" 0 takes its messages away.
            if (defaults.deletedInConfig == 0)
                store.removeAll(*current);
            m_index.forget(id);
            continue;
        }
        if (!bound.contains(id))
            continue;
        const MailStore::Folder planned = FolderPlan::folderFor(defaults, *place);
        if (!store.exists(*current)) {
            followMailProgram(store, id, *current, defaults, planned);
        } else if (*current != planned) {
            // Changed in ConfigConsumer: "SubMovedInConfig" 0 takes the messages along.
            QString error;
            if (defaults.movedInConfig == 0) {
                if (store.move(*current, planned, &error))
                    moves.append({*current, planned});
                else
                    qCWarning(lcDeliver) << "cannot move" << FolderPlan::pathText(*current) << error;
            }
            m_index.setFolder(id, planned);
            qCInfo(lcDeliver) << "subscription" << id << "now delivers to" << FolderPlan::pathText(planned);
        }
    }
    m_index.save();
    return moves;
}

void FolderFollower::followMailProgram(MailStore &store, qint32 subscriptionId,
                                       const MailStore::Folder &current, const FolderDefaults &defaults,
                                       const MailStore::Folder &planned)
{
    if (const auto moved = store.findTagged(subscriptionId)) {
        // "SubMovedInOutlook" 0: the folder's new place becomes the subscription's own.
        if (defaults.movedInMailer == 0) {
            m_settings.store(QStringLiteral("SubscriptionSpecifics_%1").arg(subscriptionId),
                             {{QStringLiteral("StoreLocationOption"), QStringLiteral("1")},
                              {QStringLiteral("StoreLocationSpecificFolder"), FolderPlan::pathText(*moved)},
                              {QStringLiteral("StoreInNamedFolder"), QStringLiteral("0")}});
            m_index.setFolder(subscriptionId, *moved);
        } else {
            m_index.setFolder(subscriptionId, planned);
        }
        qCInfo(lcDeliver) << "folder" << FolderPlan::pathText(current) << "was moved to"
                          << FolderPlan::pathText(*moved);
        return;
    }
    // The whole store went away just now: an outage, not a deletion.
    if (!store.reachable())
        return;
    // "SubDeletedInOutlook" 0: delivery of the subscription stops; 1: the folder comes back.
    qCInfo(lcDeliver) << "folder" << FolderPlan::pathText(current) << "was deleted in the mail program";
    if (defaults.deletedInMailer == 0) {
        m_client.BindItem(DeliverySettings::kConsumer, quillon::kNewsClass, subscriptionId, 0);
        m_index.forget(subscriptionId);
    } else {
        m_index.setFolder(subscriptionId, planned);
    }
}
