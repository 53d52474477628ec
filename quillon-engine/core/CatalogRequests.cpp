#include "CatalogRequests.h"

#include "AddressResolver.h"
#include "ArticleStore.h"
#include "EngineMessages.h"
#include "Outbox.h"
#include "ReaderImporterRegistry.h"
#include "SubscriptionStore.h"

namespace quillon {

void CatalogRequests::list(const Origin &origin, const PropertyBag &request)
{
    const QString which = request.text(QStringLiteral("LIST")).trimmed().toUpper();
    ListPtr entries;
    if (which == QLatin1String("IMPORT"))
        entries = m_importers.bags();
    else if (which == QLatin1String("SEARCHSOURCES"))
        entries = m_resolver.searchSources().bags();
    if (!entries) {
        m_outbox.toCallback(
            origin.session, origin.callbackId,
            EngineMessages::failure(
                QStringLiteral("Unknown list '%1'").arg(request.text(QStringLiteral("LIST")))));
        return;
    }
    auto payload = PropertyBag::create();
    payload->set(which, entries);
    m_outbox.toCallback(origin.session, origin.callbackId,
                        EngineMessages::message(QStringLiteral("ListResult"), payload));
}

void CatalogRequests::items(const Origin &origin, const PropertyBag &request)
{
    const qint32 id = request.number(QStringLiteral("SUBSCRIPTIONID"));
    if (id <= 0 || !m_subscriptions.exists(id)) {
        m_outbox.toCallback(origin.session, origin.callbackId,
                            EngineMessages::failure(QStringLiteral("There is no subscription %1").arg(id)));
        return;
    }
    const ListPtr items = m_articles.itemBags(id);
    auto payload = PropertyBag::create();
    payload->setLong(QStringLiteral("SUBSCRIPTIONID"), id);
    payload->setLong(QStringLiteral("ITEMCOUNT"), qint32(items->size()));
    payload->set(QStringLiteral("ITEMS"), items);
    m_outbox.toCallback(origin.session, origin.callbackId,
                        EngineMessages::message(QStringLiteral("SubscriptionItems"), payload));
}

} // namespace quillon
