#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>

namespace quillon {

// Finding the feed of a web page: the feeds the page advertises with <link rel="alternate">
// (RSS, Atom and RDF types, in document order), then the places sites usually keep one.
namespace FeedDiscovery {

// An HTML document rather than a feed: told by its type, else by how it begins.
[[nodiscard]] bool LooksLikeHtml(const QByteArray &body, const QString &contentType);
// The first `most` advertised feeds, resolved against the page (and its <base href>).
[[nodiscard]] QList<QUrl> AdvertisedFeeds(const QByteArray &html, const QUrl &page, qsizetype most = 16);
// The usual feed addresses of the page's site, tried when it advertises none.
[[nodiscard]] QList<QUrl> CommonFeedPaths(const QUrl &page);

} // namespace FeedDiscovery

} // namespace quillon
