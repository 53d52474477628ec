#pragma once

#include "NetworkSettings.h"
#include "ProxyRoute.h"
#include "SystemProxy.h"

#include <QUrl>

namespace quillon {

// What the user's settings ask of every fetch, shared by the engine (which changes it when the
// settings are written) and its fetcher (which asks it before each request, redirects
// included): the proxy route and how many fetches may run at once.
class FetchPolicy
{
public:
    void setNetwork(NetworkSettings settings) { m_network = std::move(settings); }
    [[nodiscard]] const NetworkSettings &network() const { return m_network; }
    // 0 leaves the fetcher's own limit.
    void setMaxConcurrent(int fetches) { m_maxConcurrent = fetches; }
    [[nodiscard]] int maxConcurrent() const { return m_maxConcurrent; }

    [[nodiscard]] ProxyRoute route(const QUrl &url);
    // This machine, and names without a dot, which only the local network can mean.
    [[nodiscard]] static bool isLocal(const QString &host);

private:
    [[nodiscard]] ProxyRoute specific() const;
    [[nodiscard]] ProxyRoute system(const QUrl &url, bool local);
    void addLogin(ProxyRoute &route) const;

    NetworkSettings m_network;
    int m_maxConcurrent = 0;
    SystemProxy m_system;
};

} // namespace quillon
