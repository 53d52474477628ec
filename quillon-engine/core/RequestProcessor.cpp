#include "RequestProcessor.h"

#include "BindingStore.h"
#include "CoreLogging.h"
#include "EngineMessages.h"
#include "ItemClass.h"
#include "Outbox.h"
#include "SubscriptionStore.h"

namespace quillon {

namespace {
// ConsumerIDs is a list; a single text is taken as a list of one.
QStringList consumerList(const PropertyValue *value)
{
    QStringList ids;
    if (!value)
        return ids;
    if (const auto *list = std::get_if<ListPtr>(value)) {
        if (*list) {
            for (const auto &item : (*list)->items())
                ids.append(valueText(item));
        }
    } else if (std::holds_alternative<QString>(*value)) {
        ids.append(valueText(*value));
    }
    ids.removeAll(QString());
    ids.removeAll(kMissingText);
    ids.removeDuplicates();
    return ids;
}
} // namespace

void RequestProcessor::process(const Origin &origin, const PropertyBag &request)
{
    const QString kind =
        request.contains(QStringLiteral("REQUEST")) ? request.text(QStringLiteral("REQUEST")) : QString();
    const auto handler = m_handlers.constFind(kind.toUpper());
    if (kind.compare(QLatin1String("ADD"), Qt::CaseInsensitive) == 0)
        add(origin, request);
    else if (handler != m_handlers.cend())
        (*handler)(origin, request);
    else if (kind.isEmpty())
        refuse(origin, QStringLiteral("The request names no REQUEST kind"));
    else
        refuse(origin, QStringLiteral("Unknown request kind '%1'").arg(kind));
}

void RequestProcessor::registerKind(const QString &kind, Handler handler)
{
    m_handlers.insert(kind.toUpper(), std::move(handler));
}

void RequestProcessor::add(const Origin &origin, const PropertyBag &request)
{
    const QString itemClass =
        request.contains(QStringLiteral("CLASS")) ? request.text(QStringLiteral("CLASS")) : kNewsClass;
    if (!isNewsClass(itemClass))
        return refuse(origin, QStringLiteral("Cannot add items of class '%1'").arg(itemClass));
    const QString url =
        request.contains(QStringLiteral("URL")) ? request.text(QStringLiteral("URL")).trimmed() : QString();
    if (url.isEmpty() || url == kMissingText)
        return refuse(origin, QStringLiteral("The add request has no URL"));

    const qint32 id = m_subscriptions.create(request, origin.now);
    qCDebug(lcCore) << origin.consumerId << "added subscription" << id << url;
    const QStringList bound = consumerList(request.find(QStringLiteral("ConsumerIDs")));
    for (const QString &consumer : bound)
        m_bindings.bind(consumer, id, true, origin.now);

    // Consumers hear of the subscription before they hear of its bindings.
    const BagPtr payload = EngineMessages::addedPayload(*m_subscriptions.itemBag(id));
    m_outbox.toCallback(origin.session, origin.callbackId,
                        EngineMessages::message(QStringLiteral("SubscriptionAddResult"), payload->clone()));
    m_outbox.toConnected(EngineMessages::message(QStringLiteral("SubscriptionAdded"), payload),
                         origin.session);
    for (const QString &consumer : bound)
        m_outbox.toConnected(EngineMessages::bindingChanged(origin.consumerId, consumer, true, id));
}

void RequestProcessor::refuse(const Origin &origin, const QString &error)
{
    qCInfo(lcCore) << "request refused:" << error;
    m_outbox.toCallback(origin.session, origin.callbackId, EngineMessages::failure(error));
}

} // namespace quillon
