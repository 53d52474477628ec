#pragma once

#include "FetchRequest.h"
#include "FetchResult.h"

#include <functional>
#include <memory>

namespace quillon {

class FetchPolicy;

// Fetches documents for the engine. The answer always arrives later, from the event loop, and
// never after the fetcher is gone; tests put a fetcher of their own in its place.
class FeedFetcher
{
public:
    using Done = std::function<void(const FetchResult &)>;

    virtual ~FeedFetcher() = default;
    virtual void fetch(const FetchRequest &request, Done done) = 0;
    // The settings every web request follows from now on; a fetcher of tests may ignore them.
    virtual void setPolicy(std::shared_ptr<FetchPolicy> policy) { (void)policy; }
};

} // namespace quillon
