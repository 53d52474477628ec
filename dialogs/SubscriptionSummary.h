#pragma once

#include "SubscribeClient.h"

#include <QString>

#include <optional>

// The few properties of one subscription that the enclosure and login questions show.
// Values the engine does not hold read as empty text.
struct SubscriptionSummary
{
    QString title;
    QString url;
    QString user;

    // nullopt for an ID that names no subscription. Engine failures propagate.
    [[nodiscard]] static std::optional<SubscriptionSummary> Read(quillon::SubscribeClient &client,
                                                                 qint32 subscriptionId);
    // The title, or the URL when the engine only knows the feed as "Unknown".
    [[nodiscard]] QString DisplayName() const;
    [[nodiscard]] bool HasUser() const { return !user.isEmpty(); }
};
