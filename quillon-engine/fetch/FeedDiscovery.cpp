#include "FeedDiscovery.h"

#include <QRegularExpression>
#include <QSet>

namespace quillon::FeedDiscovery {

namespace {

// Feeds are advertised in the head; a page's first 512 KiB is plenty to find them.
constexpr qsizetype kScanLimit = 512 * 1024;

// The document's first element, lower-cased, past byte order marks, the XML declaration,
// processing instructions and comments: read for every fetch, so on bytes, in the first KiB.
QByteArray leadingElement(const QByteArray &body)
{
    QByteArrayView rest = QByteArrayView(body).first(std::min<qsizetype>(body.size(), 1024));
    for (;;) {
        rest = rest.trimmed();
        if (rest.startsWith("\xEF\xBB\xBF")) {
            rest = rest.sliced(3);
            continue;
        }
        const bool instruction = rest.startsWith("<?");
        if (!instruction && !rest.startsWith("<!--"))
            break;
        const QByteArrayView close = instruction ? QByteArrayView("?>") : QByteArrayView("-->");
        const qsizetype end = rest.indexOf(close, instruction ? 2 : 4);
        if (end < 0)
            break;
        rest = rest.sliced(end + close.size());
    }
    return rest.first(std::min<qsizetype>(rest.size(), 16)).toByteArray().toLower();
}

QHash<QString, QString> attributes(const QString &tag)
{
    static const QRegularExpression attribute(
        QStringLiteral(R"re(([a-zA-Z_:][-a-zA-Z0-9_:.]*)\s*=\s*(?:"([^"]*)"|'([^']*)'|([^\s"'>]+)))re"));
    QHash<QString, QString> found;
    for (auto it = attribute.globalMatch(tag); it.hasNext();) {
        const auto m = it.next();
        QString value = m.captured(2);
        if (value.isEmpty())
            value = m.captured(3).isEmpty() ? m.captured(4) : m.captured(3);
        found.insert(m.captured(1).toLower(),
                     value.replace(QStringLiteral("&amp;"), QStringLiteral("&")).trimmed());
    }
    return found;
}

bool isFeedType(const QString &type)
{
    static const QSet<QString> types{
        QStringLiteral("application/rss+xml"), QStringLiteral("application/atom+xml"),
        QStringLiteral("application/rdf+xml"), QStringLiteral("application/x.atom+xml"),
        QStringLiteral("application/x-atom+xml")};
    return types.contains(type.section(QLatin1Char(';'), 0, 0).trimmed().toLower());
}

} // namespace

bool LooksLikeHtml(const QByteArray &body, const QString &contentType)
{
    const QString type = contentType.section(QLatin1Char(';'), 0, 0).trimmed().toLower();
    const QByteArray start = leadingElement(body);
    // A feed served as text/html is still a feed.
    if (start.startsWith("<rss") || start.startsWith("<feed") || start.startsWith("<rdf:rdf") ||
        start.startsWith("<opml"))
        return false;
    if (type == QLatin1String("text/html") || type == QLatin1String("application/xhtml+xml"))
        return true;
    return start.startsWith("<!doctype html") || start.startsWith("<html");
}

QList<QUrl> AdvertisedFeeds(const QByteArray &html, const QUrl &page, qsizetype most)
{
    const QString text = QString::fromUtf8(html.left(kScanLimit));
    static const QRegularExpression linkTag(QStringLiteral(R"re(<(link|base)\b[^>]*>)re"),
                                            QRegularExpression::CaseInsensitiveOption);
    QUrl base = page;
    QList<QUrl> feeds;
    for (auto it = linkTag.globalMatch(text); it.hasNext() && feeds.size() < most;) {
        const auto m = it.next();
        const QHash<QString, QString> attrs = attributes(m.captured(0));
        if (m.captured(1).compare(QLatin1String("base"), Qt::CaseInsensitive) == 0) {
            if (attrs.contains(QStringLiteral("href")))
                base = page.resolved(QUrl(attrs.value(QStringLiteral("href"))));
            continue;
        }
        const QStringList rel =
            attrs.value(QStringLiteral("rel")).toLower().split(QLatin1Char(' '), Qt::SkipEmptyParts);
        const QString href = attrs.value(QStringLiteral("href"));
        if (!rel.contains(QLatin1String("alternate")) || !isFeedType(attrs.value(QStringLiteral("type"))) ||
            href.isEmpty())
            continue;
        const QUrl feed = base.resolved(QUrl(href));
        if (feed.isValid() &&
            (feed.scheme() == QLatin1String("http") || feed.scheme() == QLatin1String("https")) &&
            !feeds.contains(feed))
            feeds << feed;
    }
    return feeds;
}

QList<QUrl> CommonFeedPaths(const QUrl &page)
{
    QList<QUrl> paths;
    for (const char *path : {"/feed", "/rss", "/feed.xml", "/rss.xml", "/atom.xml", "/index.xml"}) {
        QUrl url = page.adjusted(QUrl::RemoveQuery | QUrl::RemoveFragment);
        url.setPath(QLatin1String(path));
        paths << url;
    }
    return paths;
}

} // namespace quillon::FeedDiscovery
