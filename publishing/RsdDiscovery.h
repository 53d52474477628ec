#pragma once

#include "WeblogConnection.h"

#include <QString>
#include <QUrl>

// Finds a weblog's posting address the way weblog tools agree on: the home page links an RSD
// document (<link rel="EditURI">), which names each interface with its address.
namespace RsdDiscovery {

// The address of the RSD document that the page links; empty when it links none.
[[nodiscard]] QUrl EditUri(const QString &html, const QUrl &page);
// The address of the interface named api (case ignored); empty when the document names none.
[[nodiscard]] QUrl ApiLink(const QByteArray &rsd, const QString &api);
// Both steps over the network; empty when either finds nothing, with the reason in why.
[[nodiscard]] QUrl FindPostingAddress(WeblogConnection &connection, const QUrl &weblog, const QString &api,
                                      QString *why);

} // namespace RsdDiscovery
