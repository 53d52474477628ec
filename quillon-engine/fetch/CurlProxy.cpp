#include "CurlProxy.h"

namespace quillon {

void CurlProxy::apply(CURL *easy, const ProxyRoute &route)
{
    curl_easy_setopt(easy, CURLOPT_PROXY, route.proxy.toUtf8().constData());
    if (route.login == ProxyRoute::Login::Password) {
        curl_easy_setopt(easy, CURLOPT_PROXYUSERNAME, route.user.toUtf8().constData());
        curl_easy_setopt(easy, CURLOPT_PROXYPASSWORD, route.password.toUtf8().constData());
        curl_easy_setopt(easy, CURLOPT_PROXYAUTH, CURLAUTH_ANY);
    } else if (route.login == ProxyRoute::Login::Negotiate) {
        // An empty login makes curl take the user's own ticket.
        curl_easy_setopt(easy, CURLOPT_PROXYUSERPWD, ":");
        curl_easy_setopt(easy, CURLOPT_PROXYAUTH, CURLAUTH_NEGOTIATE);
    }
}

} // namespace quillon
