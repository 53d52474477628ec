#include "SubscriptionSummary.h"

#include "EngineNames.h"
#include "HandleGuard.h"
#include "PropertyBag.h"

using EngineNames::kNewsClass;

namespace {
QString ReadText(quillon::SubscribeClient &client, quillon::Handle bag, const QString &name)
{
    return quillon::presentText(client.GetStringValue(bag, name));
}
} // namespace

std::optional<SubscriptionSummary> SubscriptionSummary::Read(quillon::SubscribeClient &client,
                                                             qint32 subscriptionId)
{
    if (subscriptionId < 1 || subscriptionId == quillon::kMissing)
        return std::nullopt;
    HandleGuard bag(client, client.GetItemBag(kNewsClass, subscriptionId, 0));
    if (!bag.isValid())
        return std::nullopt;
    SubscriptionSummary summary;
    summary.title = ReadText(client, bag.get(), QStringLiteral("TITLE"));
    summary.url = ReadText(client, bag.get(), QStringLiteral("URL"));
    summary.user = ReadText(client, bag.get(), QStringLiteral("USER"));
    return summary;
}

QString SubscriptionSummary::DisplayName() const
{
    // An empty title names nothing either.
    if (title == QLatin1String("Unknown") || title.isEmpty())
        return url;
    return title;
}
