#include "EngineMessages.h"

namespace quillon {

BagPtr EngineMessages::message(const QString &name, BagPtr result)
{
    auto bag = PropertyBag::create();
    bag->setText(QStringLiteral("MESSAGE"), name);
    bag->set(QStringLiteral("Result"), std::move(result));
    return bag;
}

BagPtr EngineMessages::failure(const QString &error)
{
    auto bag = PropertyBag::create();
    bag->setText(QStringLiteral("MESSAGE"), QStringLiteral("RequestFailed"));
    bag->setText(QStringLiteral("ERROR"), error);
    return bag;
}

BagPtr EngineMessages::bindingChanged(const QString &originator, const QString &consumerId, bool bound,
                                      qint32 subscriptionId)
{
    auto ids = PropertyList::create();
    ids->append(subscriptionId);
    auto result = PropertyBag::create();
    result->setText(QStringLiteral("ORIGINATOR"), originator);
    result->setText(QStringLiteral("CONSUMERID"), consumerId);
    result->setText(QStringLiteral("SubscriptionBindFlag"),
                    bound ? QStringLiteral("TRUE") : QStringLiteral("FALSE"));
    result->setLong(QStringLiteral("SUBSCRIPTIONID"), subscriptionId);
    result->set(QStringLiteral("SUBSCRIPTIONIDS"), ids);
    return message(QStringLiteral("SubscriptionBindingChanged"), result);
}

BagPtr EngineMessages::addedPayload(const PropertyBag &subscription)
{
    auto result = PropertyBag::create();
    for (const char *name : {"SUBSCRIPTIONID", "URL", "TITLE", "CATEGORY"}) {
        if (const PropertyValue *value = subscription.find(QLatin1String(name)))
            result->set(QLatin1String(name), *value);
    }
    return result;
}

} // namespace quillon
