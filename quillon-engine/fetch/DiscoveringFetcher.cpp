#include "DiscoveringFetcher.h"

#include "FeedDiscovery.h"

#include <QElapsedTimer>
#include <QSet>

namespace quillon {

// One page's search: the candidates in the order they are preferred, each one's answer as it
// comes, and what has been spent.
struct DiscoveringFetcher::Search
{
    enum class State { Waiting, Running, Failed, Found };
    FetchRequest original;
    QUrl page;
    QList<QUrl> candidates;
    QList<State> states;
    QList<FetchResult> found;
    qsizetype next = 0;
    int running = 0;
    qint64 bytes = 0;
    QElapsedTimer clock;
    Done done;
};

namespace {
// The login goes with a candidate only where the page asked for it: same scheme, host and port.
bool sameOrigin(const QUrl &a, const QUrl &b)
{
    return a.scheme() == b.scheme() && a.host() == b.host() && a.port(-1) == b.port(-1);
}

QUrl withoutFragment(const QUrl &url)
{
    return url.adjusted(QUrl::RemoveFragment | QUrl::NormalizePathSegments);
}

// A few advertised feeds, then the usual paths; never the page itself, never one address twice.
QList<QUrl> candidatesOf(const QByteArray &page, const QUrl &pageUrl, const QUrl &asked)
{
    QSet<QUrl> seen{withoutFragment(pageUrl), withoutFragment(asked)};
    QList<QUrl> chosen;
    const auto take = [&](const QList<QUrl> &urls, int most) {
        for (const QUrl &url : urls) {
            if (most == 0 || chosen.size() >= DiscoveringFetcher::kMaxCandidates)
                return;
            if (seen.contains(withoutFragment(url)))
                continue;
            seen.insert(withoutFragment(url));
            chosen.append(url);
            --most;
        }
    };
    take(FeedDiscovery::AdvertisedFeeds(page, pageUrl), DiscoveringFetcher::kMaxAdvertised);
    take(FeedDiscovery::CommonFeedPaths(pageUrl), -1);
    return chosen;
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
        search->candidates = candidatesOf(result.body, search->page, request.url);
        search->states = QList<Search::State>(search->candidates.size(), Search::State::Waiting);
        search->found = QList<FetchResult>(search->candidates.size());
        search->done = done;
        search->clock.start();
        startMore(search);
        settle(search);
    });
}

void DiscoveringFetcher::startMore(const std::shared_ptr<Search> &search)
{
    while (search->running < kAtOnce && search->next < search->candidates.size() &&
           search->bytes < kMaxTotalBytes && search->clock.elapsed() < kMaxTotalMs) {
        const qsizetype index = search->next++;
        FetchRequest request;
        request.url = search->candidates.at(index);
        request.timeoutMs = int(std::min<qint64>(kCandidateTimeoutMs, kMaxTotalMs - search->clock.elapsed()));
        if (sameOrigin(request.url, search->original.url)) {
            request.user = search->original.user;
            request.password = search->original.password;
        }
        search->states[index] = Search::State::Running;
        ++search->running;
        m_inner->fetch(request, [this, search, index](const FetchResult &result) {
            --search->running;
            search->bytes += result.body.size();
            const bool isFeed = result.ok() && !FeedDiscovery::LooksLikeHtml(result.body, result.contentType);
            search->states[index] = isFeed ? Search::State::Found : Search::State::Failed;
            if (isFeed)
                search->found[index] = result;
            startMore(search);
            settle(search);
        });
    }
}

// Answers once the earliest candidate that can still win is known: a feed found further down
// waits for those before it, so the page's own order decides, not the fastest server.
void DiscoveringFetcher::settle(const std::shared_ptr<Search> &search)
{
    if (!search->done)
        return;
    for (qsizetype i = 0; i < search->candidates.size(); ++i) {
        const Search::State state = search->states.at(i);
        if (state == Search::State::Running)
            return;
        if (state == Search::State::Waiting) {
            if (search->running > 0)
                return;
            break; // out of budget: nothing more is tried
        }
        if (state == Search::State::Found) {
            FetchResult found = search->found.at(i);
            if (!found.finalUrl.isValid())
                found.finalUrl = search->candidates.at(i);
            found.discoveredFrom = search->page;
            std::exchange(search->done, {})(found);
            return;
        }
    }
    if (search->running > 0)
        return;
    FetchResult none;
    none.outcome = FetchResult::Outcome::Failed;
    none.reason = QStringLiteral("the web page %1 links to no feed").arg(search->page.toString());
    none.finalUrl = search->page;
    std::exchange(search->done, {})(none);
}

} // namespace quillon
