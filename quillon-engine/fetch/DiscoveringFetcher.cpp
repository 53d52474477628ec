#include "DiscoveringFetcher.h"

#include "FeedDiscovery.h"

namespace quillon {

struct DiscoveringFetcher::Search
{
    FetchRequest original;
    QUrl page;
    QList<QUrl> candidates;
    Done done;
};

namespace {
// The login goes with a candidate only where the page asked for it: same scheme, host and port.
bool sameOrigin(const QUrl &a, const QUrl &b)
{
    return a.scheme() == b.scheme() && a.host() == b.host() && a.port(-1) == b.port(-1);
}
} // namespace

DiscoveringFetcher::DiscoveringFetcher(std::unique_ptr<FeedFetcher> inner) : m_inner(std::move(inner)) {}

void DiscoveringFetcher::fetch(const FetchRequest &request, Done done)
{
    // The inner fetcher answers only while it lives, and it dies with this one.
    m_inner->fetch(request, [this, request, done = std::move(done)](const FetchResult &result) {
        if (!result.ok() || !FeedDiscovery::LooksLikeHtml(result.body, result.contentType)) {
            done(result);
            return;
        }
        auto search = std::make_shared<Search>();
        search->original = request;
        search->page = result.finalUrl.isValid() ? result.finalUrl : request.url;
        search->candidates = FeedDiscovery::AdvertisedFeeds(result.body, search->page);
        if (search->candidates.isEmpty())
            search->candidates = FeedDiscovery::CommonFeedPaths(search->page);
        search->done = done;
        tryNext(search);
    });
}

void DiscoveringFetcher::tryNext(std::shared_ptr<Search> search)
{
    if (search->candidates.isEmpty()) {
        FetchResult none;
        none.outcome = FetchResult::Outcome::Failed;
        none.reason = QStringLiteral("the web page %1 links to no feed").arg(search->page.toString());
        none.finalUrl = search->page;
        search->done(none);
        return;
    }
    FetchRequest request;
    request.url = search->candidates.takeFirst();
    if (sameOrigin(request.url, search->original.url)) {
        request.user = search->original.user;
        request.password = search->original.password;
    }
    m_inner->fetch(request, [this, search, url = request.url](const FetchResult &result) {
        if (!result.ok() || FeedDiscovery::LooksLikeHtml(result.body, result.contentType)) {
            tryNext(search);
            return;
        }
        FetchResult found = result;
        if (!found.finalUrl.isValid())
            found.finalUrl = url;
        found.discoveredFrom = search->page;
        search->done(found);
    });
}

} // namespace quillon
