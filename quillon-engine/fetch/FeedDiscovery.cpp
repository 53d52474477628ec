#include "FeedDiscovery.h"

#include <QRegularExpression>
#include <QSet>

namespace quillon::FeedDiscovery {

namespace {

// Feeds are advertised in the head; a page's first 512 KiB is plenty to find them.
constexpr qsizetype kScanLimit = 512 * 1024;

QString leadingText(const QByteArray &body)
{
    QString start = QString::fromUtf8(body.left(1024)).trimmed().toLower();
    if (start.startsWith(QChar(0xFEFF)))
        start.remove(0, 1);
    // Skip the XML declaration and comments before the first element.
    static const QRegularExpression prolog(QStringLiteral(R"re(^(\s*(<\?[^>]*\?>|<!--.*?-->))*\s*)re"),
                                           QRegularExpression::DotMatchesEverythingOption);
    return start.remove(prolog);
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
    const QString start = leadingText(body);
    // A feed served as text/html is still a feed.
    if (start.startsWith(QLatin1String("<rss")) || start.startsWith(QLatin1String("<feed")) ||
        start.startsWith(QLatin1String("<rdf:rdf")) || start.startsWith(QLatin1String("<opml")))
        return false;
    if (type == QLatin1String("text/html") || type == QLatin1String("application/xhtml+xml"))
        return true;
    return start.startsWith(QLatin1String("<!doctype html")) || start.startsWith(QLatin1String("<html"));
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
