#pragma once

#include "ArticleMessage.h"
#include "DeliveryIndex.h"
#include "DeliverySettings.h"
#include "MailStore.h"
#include "SubscribeClient.h"

#include <QHash>
#include <QList>

#include <optional>

// Reads the engine's article items into messages, each with the folder it goes to. The place of
// a subscription is read once and kept until forget(), so a batch is placed consistently.
class ArticleBatchReader
{
public:
    struct Outgoing
    {
        ArticleMessage article;
        MailStore::Folder folder;
    };

    ArticleBatchReader(quillon::SubscribeClient &client, DeliverySettings &settings, DeliveryIndex &index)
        : m_client(client), m_settings(settings), m_index(index)
    {
    }

    // The articles of a list of items; those of subscriptions removed meanwhile are left out.
    [[nodiscard]] QList<Outgoing> read(quillon::Handle items);
    // Null for a subscription that no longer exists.
    const SubscriptionPlace *placeOf(qint32 subscriptionId);
    void forget() { m_places.clear(); }

private:
    [[nodiscard]] ArticleMessage readArticle(quillon::Handle item, const SubscriptionPlace &place,
                                             const FolderDefaults &defaults);
    // The folder the subscription's messages go to now.
    MailStore::Folder folderFor(const SubscriptionPlace &place, const FolderDefaults &defaults);

    quillon::SubscribeClient &m_client;
    DeliverySettings &m_settings;
    DeliveryIndex &m_index;
    QHash<qint32, std::optional<SubscriptionPlace>> m_places;
};
