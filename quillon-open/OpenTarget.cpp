#include "OpenTarget.h"

#include <QFile>
#include <QFileInfo>
#include <QUrl>
#include <QXmlStreamReader>

namespace {
// Enough of a file to find its kind and its own address; feeds name it near the top.
constexpr int kElementsRead = 200;

bool isWebAddress(const QString &text)
{
    const QString scheme = QUrl(text).scheme().toLower();
    return scheme == QLatin1String("http") || scheme == QLatin1String("https");
}

// The feed's own web address (atom:link rel="self"), so a subscription outlives the file a
// browser saved in a temporary folder; empty when the document names none.
QString selfAddress(QXmlStreamReader &xml)
{
    for (int seen = 0; seen < kElementsRead && !xml.atEnd(); ++seen) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        const auto attributes = xml.attributes();
        const QString href = attributes.value(QLatin1String("href")).toString().trimmed();
        if (xml.name() == QLatin1String("link") &&
            attributes.value(QLatin1String("rel")) == QLatin1String("self") && isWebAddress(href))
            return href;
    }
    return QString();
}
} // namespace

OpenTarget OpenTarget::fromArgument(const QString &argument)
{
    const QString text = argument.trimmed();
    const QString lower = text.toLower();
    if (lower.startsWith(QLatin1String("feed:")) || lower.startsWith(QLatin1String("feeds:")))
        return fromFeedLink(text);
    if (isWebAddress(text))
        return {Kind::Feed, text};
    if (lower.startsWith(QLatin1String("file:")))
        return fromFile(QUrl(text).toLocalFile());
    return fromFile(text);
}

OpenTarget OpenTarget::fromFeedLink(const QString &link)
{
    const qsizetype colon = link.indexOf(QLatin1Char(':'));
    const bool secure = link.left(colon).compare(QLatin1String("feeds"), Qt::CaseInsensitive) == 0;
    const QString rest = link.mid(colon + 1);
    QString address;
    if (rest.startsWith(QLatin1String("//")))
        address = (secure ? QStringLiteral("https:") : QStringLiteral("http:")) + rest;
    else if (isWebAddress(rest))
        address = rest;
    else if (!rest.isEmpty())
        address = (secure ? QStringLiteral("https://") : QStringLiteral("http://")) + rest;
    const QUrl url(address);
    if (!url.isValid() || url.host().isEmpty())
        return {Kind::Invalid, QString(), QStringLiteral("%1 names no feed address").arg(link)};
    return {Kind::Feed, url.toString()};
}

OpenTarget OpenTarget::fromFile(const QString &path)
{
    const QFileInfo info(path);
    QFile file(info.absoluteFilePath());
    if (path.isEmpty() || !file.open(QIODevice::ReadOnly))
        return {Kind::Invalid, QString(), QStringLiteral("%1 cannot be read").arg(path)};
    QXmlStreamReader xml(&file);
    while (!xml.atEnd() && xml.readNext() != QXmlStreamReader::StartElement) {
    }
    const QString root = xml.name().toString().toLower();
    if (root == QLatin1String("opml"))
        return {Kind::Opml, info.absoluteFilePath()};
    if (root == QLatin1String("rss") || root == QLatin1String("feed") || root == QLatin1String("rdf")) {
        const QString self = selfAddress(xml);
        return {Kind::Feed, self.isEmpty() ? QUrl::fromLocalFile(info.absoluteFilePath()).toString() : self};
    }
    return {Kind::Invalid, QString(), QStringLiteral("%1 is neither a feed nor an OPML file").arg(path)};
}
