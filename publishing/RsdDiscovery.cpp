#include "RsdDiscovery.h"

#include <QRegularExpression>
#include <QXmlStreamReader>

namespace RsdDiscovery {

namespace {
QString Attribute(const QString &tag, const QString &name)
{
    static const QRegularExpression attribute(
        QStringLiteral(R"re(([\w:-]+)\s*=\s*(?:"([^"]*)"|'([^']*)'|([^\s>]+)))re"));
    for (auto it = attribute.globalMatch(tag); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        if (match.captured(1).compare(name, Qt::CaseInsensitive) == 0)
            return match.captured(2) + match.captured(3) + match.captured(4);
    }
    return {};
}
} // namespace

QUrl EditUri(const QString &html, const QUrl &page)
{
    static const QRegularExpression linkTag(QStringLiteral(R"re(<link\b[^>]*>)re"),
                                            QRegularExpression::CaseInsensitiveOption);
    for (auto it = linkTag.globalMatch(html); it.hasNext();) {
        const QString tag = it.next().captured(0);
        const QStringList rels =
            Attribute(tag, QStringLiteral("rel")).split(QLatin1Char(' '), Qt::SkipEmptyParts);
        if (!rels.contains(QStringLiteral("EditURI"), Qt::CaseInsensitive))
            continue;
        const QString href =
            Attribute(tag, QStringLiteral("href")).replace(QStringLiteral("&amp;"), QStringLiteral("&"));
        if (!href.isEmpty())
            return page.resolved(QUrl(href));
    }
    return {};
}

QUrl ApiLink(const QByteArray &rsd, const QString &api)
{
    QXmlStreamReader reader(rsd);
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement && reader.name() == QLatin1String("api") &&
            reader.attributes().value(QStringLiteral("name")).compare(api, Qt::CaseInsensitive) == 0)
            return QUrl(reader.attributes().value(QStringLiteral("apiLink")).toString());
    }
    return {};
}

QUrl FindPostingAddress(WeblogConnection &connection, const QUrl &weblog, const QString &api, QString *why)
{
    const WeblogConnection::Answer page = connection.Get(weblog);
    if (!page.error.isEmpty()) {
        *why = QStringLiteral("%1 could not be read: %2").arg(weblog.toString(), page.error);
        return {};
    }
    const QUrl rsdAddress = EditUri(QString::fromUtf8(page.body), page.url);
    if (rsdAddress.isEmpty()) {
        *why = QStringLiteral("%1 names no posting interface (no EditURI link).").arg(weblog.toString());
        return {};
    }
    const WeblogConnection::Answer rsd = connection.Get(rsdAddress);
    const QUrl link = rsd.error.isEmpty() ? ApiLink(rsd.body, api) : QUrl();
    if (link.isEmpty())
        *why = QStringLiteral("%1 names no %2 interface.").arg(rsdAddress.toString(), api);
    return link;
}

} // namespace RsdDiscovery
