#pragma once

#include "DeliveryIndex.h"
#include "DeliverySettings.h"
#include "FolderPlan.h"
#include "MailStore.h"

#include <functional>

// Keeps each subscription's delivered messages where its settings say: follows a change made in
// ConfigConsumer (a rename, another category or location, a deletion) and one made in the mail
// program (a folder moved or deleted), as "SubMovedInConfig", "SubDeletedInConfig",
// "SubMovedInOutlook" and "SubDeletedInOutlook" say.
class FolderFollower
{
public:
    // The place of a subscription, or none when it was deleted.
    using PlaceOf = std::function<const SubscriptionPlace *(qint32 subscriptionId)>;

    FolderFollower(quillon::SubscribeClient &client, DeliverySettings &settings, DeliveryIndex &index)
        : m_client(client), m_settings(settings), m_index(index)
    {
    }

    struct Move
    {
        MailStore::Folder from;
        MailStore::Folder to;
    };

    // Compares every indexed subscription's folder with its plan and acts; engine failures throw.
    // The moves of messages it made, so their read marks can be looked at again.
    QList<Move> follow(MailStore &store, const PlaceOf &placeOf);

private:
    void followMailProgram(MailStore &store, qint32 subscriptionId, const MailStore::Folder &current,
                           const FolderDefaults &defaults, const MailStore::Folder &planned);

    quillon::SubscribeClient &m_client;
    DeliverySettings &m_settings;
    DeliveryIndex &m_index;
};
