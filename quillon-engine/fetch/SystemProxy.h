#pragma once

#include <QStringList>
#include <QUrl>

struct pxProxyFactory_;

namespace quillon {

// The proxy the desktop would use for an address: libproxy where the build has it (GNOME and
// KDE settings, PAC files, the environment), else the environment variables as curl reads
// them. Asked for every request, so a changed desktop setting counts at once.
class SystemProxy
{
public:
    SystemProxy();
    ~SystemProxy();
    SystemProxy(const SystemProxy &) = delete;
    SystemProxy &operator=(const SystemProxy &) = delete;

    // libproxy's answer in its order ("direct://" included); empty when it has none to give.
    [[nodiscard]] QStringList desktopProxies(const QUrl &url);
    // http_proxy / https_proxy / all_proxy unless no_proxy names the host; empty for none.
    [[nodiscard]] static QString environmentProxy(const QUrl &url);

private:
    [[nodiscard]] static bool excludedByEnvironment(const QString &host);

    pxProxyFactory_ *m_factory = nullptr;
};

} // namespace quillon
