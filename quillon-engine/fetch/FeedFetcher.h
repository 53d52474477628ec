#pragma once

#include "FetchRequest.h"
#include "FetchResult.h"

#include <functional>

namespace quillon {

// Fetches documents for the engine. The answer always arrives later, from the event loop, and
// never after the fetcher is gone; tests put a fetcher of their own in its place.
class FeedFetcher
{
public:
    using Done = std::function<void(const FetchResult &)>;

    virtual ~FeedFetcher() = default;
    virtual void fetch(const FetchRequest &request, Done done) = 0;
};

} // namespace quillon
