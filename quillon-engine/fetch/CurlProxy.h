#pragma once

#include "ProxyRoute.h"

#include <curl/curl.h>

namespace quillon {

// Sets a curl handle to go the way a route says: through its proxy with its login, or
// directly (an empty proxy also keeps curl from reading the environment on its own).
class CurlProxy
{
public:
    static void apply(CURL *easy, const ProxyRoute &route);
};

} // namespace quillon
