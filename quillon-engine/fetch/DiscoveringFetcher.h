#pragma once

#include "FeedFetcher.h"

#include <QList>
#include <QUrl>

#include <memory>

namespace quillon {

// Fetches through another fetcher; when the document is a web page rather than a feed, fetches
// the first few feeds the page advertises, then the usual feed addresses of its site, several
// at once, and answers with the first of them in that order that is a feed (finalUrl its
// address, discoveredFrom the page). The work one page can cause is fixed: so many candidates,
// each address once, a short time each, and a total of time and bytes. A page with no feed
// fails with a reason that says so.
class DiscoveringFetcher final : public FeedFetcher
{
public:
    static constexpr int kMaxAdvertised = 4;
    static constexpr int kMaxCandidates = 10;
    static constexpr int kAtOnce = 4;
    static constexpr int kCandidateTimeoutMs = 4000;
    static constexpr qint64 kMaxTotalMs = 12000;
    static constexpr qint64 kMaxTotalBytes = 24 * 1024 * 1024;

    explicit DiscoveringFetcher(std::unique_ptr<FeedFetcher> inner);

    void fetch(const FetchRequest &request, Done done) override;
    void setPolicy(std::shared_ptr<FetchPolicy> policy) override { m_inner->setPolicy(std::move(policy)); }

private:
    struct Search;
    void startMore(const std::shared_ptr<Search> &search);
    void settle(const std::shared_ptr<Search> &search);

    std::unique_ptr<FeedFetcher> m_inner;
};

} // namespace quillon
