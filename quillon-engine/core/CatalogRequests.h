#pragma once

#include "RequestProcessor.h"

namespace quillon {

class AddressResolver;
class ArticleStore;
class ReaderImporterRegistry;
class SubscriptionStore;

// The requests answered from what the engine holds: REQUEST "LIST" ("IMPORT": the readers
// that can be imported from; "SEARCHSOURCES": the search sources) and REQUEST "ITEMS" (the
// stored articles of one subscription).
class CatalogRequests
{
public:
    using Origin = RequestProcessor::Origin;

    CatalogRequests(SubscriptionStore &subscriptions, ArticleStore &articles, const AddressResolver &resolver,
                    const ReaderImporterRegistry &importers, Outbox &outbox)
        : m_subscriptions(subscriptions), m_articles(articles), m_resolver(resolver), m_importers(importers),
          m_outbox(outbox)
    {
    }

    void list(const Origin &origin, const PropertyBag &request);
    void items(const Origin &origin, const PropertyBag &request);

private:
    SubscriptionStore &m_subscriptions;
    ArticleStore &m_articles;
    const AddressResolver &m_resolver;
    const ReaderImporterRegistry &m_importers;
    Outbox &m_outbox;
};

} // namespace quillon
