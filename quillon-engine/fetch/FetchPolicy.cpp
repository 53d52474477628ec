#include "FetchPolicy.h"

#include <QRegularExpression>

namespace quillon {

namespace {
ProxyRoute directly(const QString &reason)
{
    ProxyRoute route;
    route.reason = reason;
    return route;
}

ProxyRoute through(QString proxy, const QString &reason)
{
    if (!proxy.contains(QLatin1String("://")))
        proxy.prepend(QLatin1String("http://"));
    ProxyRoute route;
    route.proxy = proxy;
    route.reason = reason;
    return route;
}

// The kinds of proxy curl can speak; libproxy may name others it could not resolve.
bool usable(const QString &proxy)
{
    static const QStringList schemes = {"http", "https", "socks", "socks4", "socks4a", "socks5", "socks5h"};
    return schemes.contains(proxy.section(QLatin1String("://"), 0, 0).toLower());
}
} // namespace

bool FetchPolicy::isLocal(const QString &host)
{
    const QString name = host.toLower();
    if (name == QLatin1String("localhost") || name.endsWith(QLatin1String(".localhost")) ||
        name == QLatin1String("::1") || name == QLatin1String("0:0:0:0:0:0:0:1"))
        return true;
    static const QRegularExpression ipv4(QStringLiteral("^[0-9]+(\\.[0-9]+){3}$"));
    if (ipv4.match(name).hasMatch())
        return name.startsWith(QLatin1String("127."));
    // Any other address literal is somewhere else; a name without a dot is on this network.
    return !name.contains(QLatin1Char(':')) && !name.contains(QLatin1Char('.'));
}

ProxyRoute FetchPolicy::route(const QUrl &url)
{
    const QString scheme = url.scheme().toLower();
    if (scheme != QLatin1String("http") && scheme != QLatin1String("https"))
        return directly(QStringLiteral("not a web address"));
    if (!m_network.useProxy)
        return directly(QStringLiteral("the proxy is switched off"));
    const bool local = isLocal(url.host());
    if (local && m_network.bypassForLocals)
        return directly(QStringLiteral("a local address, which bypasses the proxy"));
    ProxyRoute route = m_network.systemProxy ? system(url, local) : specific();
    addLogin(route);
    return route;
}

ProxyRoute FetchPolicy::specific() const
{
    if (m_network.specificProxy.isEmpty())
        return directly(QStringLiteral("no proxy server is named"));
    return through(m_network.specificProxy, QStringLiteral("the proxy server named in the settings"));
}

ProxyRoute FetchPolicy::system(const QUrl &url, bool local)
{
    const QStringList proxies = m_system.desktopProxies(url);
    for (const QString &proxy : proxies) {
        if (proxy == QLatin1String("direct://"))
            return directly(QStringLiteral("the system settings name no proxy for this address"));
        if (usable(proxy))
            return through(proxy, QStringLiteral("the system proxy settings"));
    }
    // This machine's own servers are reached directly, whatever the environment names.
    if (local)
        return directly(QStringLiteral("a local address, which the environment's proxy does not serve"));
    const QString proxy = SystemProxy::environmentProxy(url);
    if (proxy.isEmpty())
        return directly(QStringLiteral("the system names no proxy"));
    return through(proxy, QStringLiteral("the proxy environment variables"));
}

void FetchPolicy::addLogin(ProxyRoute &route) const
{
    if (route.direct() || !m_network.useCredentials)
        return;
    if (m_network.currentUserCredentials) {
        route.login = ProxyRoute::Login::Negotiate;
    } else if (!m_network.user.isEmpty()) {
        route.login = ProxyRoute::Login::Password;
        route.user = m_network.proxyUser();
        route.password = m_network.password;
    }
}

} // namespace quillon
