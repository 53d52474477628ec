#pragma once

#include "FeedFetcher.h"

#include <QList>
#include <QUrl>

#include <memory>

namespace quillon {

// Fetches through another fetcher; when the document is a web page rather than a feed, fetches
// the feeds the page advertises, then the usual feed addresses of its site, and answers with
// the first feed found (finalUrl its address, discoveredFrom the page). A page with no feed
// fails with a reason that says so.
class DiscoveringFetcher final : public FeedFetcher
{
public:
    explicit DiscoveringFetcher(std::unique_ptr<FeedFetcher> inner);

    void fetch(const FetchRequest &request, Done done) override;
    void setPolicy(std::shared_ptr<FetchPolicy> policy) override { m_inner->setPolicy(std::move(policy)); }

private:
    struct Search;
    void tryNext(std::shared_ptr<Search> search);

    std::unique_ptr<FeedFetcher> m_inner;
};

} // namespace quillon
