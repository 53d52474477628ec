#include "SystemProxy.h"

#include "FetchLogging.h"

#ifdef QUILLON_HAVE_LIBPROXY
#include <proxy.h>
#endif

namespace quillon {

namespace {
QString environment(const char *lower, const char *upper)
{
    QString value = qEnvironmentVariable(lower).trimmed();
    if (value.isEmpty() && upper)
        value = qEnvironmentVariable(upper).trimmed();
    return value;
}
} // namespace

SystemProxy::SystemProxy() = default;

SystemProxy::~SystemProxy()
{
#ifdef QUILLON_HAVE_LIBPROXY
    if (m_factory)
        px_proxy_factory_free(m_factory);
#endif
}

QStringList SystemProxy::desktopProxies(const QUrl &url)
{
    QStringList found;
#ifdef QUILLON_HAVE_LIBPROXY
    if (!m_factory && !(m_factory = px_proxy_factory_new())) {
        qCWarning(lcFetch) << "libproxy could not be set up; the proxy environment variables count";
        return found;
    }
    char **proxies = px_proxy_factory_get_proxies(m_factory, url.toEncoded(QUrl::RemoveUserInfo).constData());
    for (char **p = proxies; p && *p; ++p)
        found.append(QString::fromUtf8(*p));
    px_proxy_factory_free_proxies(proxies);
#else
    Q_UNUSED(url);
#endif
    return found;
}

QString SystemProxy::environmentProxy(const QUrl &url)
{
    if (excludedByEnvironment(url.host().toLower()))
        return {};
    // As curl reads them: http_proxy in lower case only, the others in either.
    const bool https = url.scheme().compare(QLatin1String("https"), Qt::CaseInsensitive) == 0;
    QString proxy = https ? environment("https_proxy", "HTTPS_PROXY") : environment("http_proxy", nullptr);
    if (proxy.isEmpty())
        proxy = environment("all_proxy", "ALL_PROXY");
    return proxy;
}

bool SystemProxy::excludedByEnvironment(const QString &host)
{
    const QString list = environment("no_proxy", "NO_PROXY");
    for (QString entry : list.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        entry = entry.trimmed().toLower();
        if (entry == QLatin1String("*"))
            return true;
        if (entry.startsWith(QLatin1Char('.')))
            entry.remove(0, 1);
        if (!entry.isEmpty() && (host == entry || host.endsWith(QLatin1Char('.') + entry)))
            return true;
    }
    return false;
}

} // namespace quillon
