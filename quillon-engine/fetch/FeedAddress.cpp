#include "FeedAddress.h"

#include <QDir>
#include <QFileInfo>

namespace quillon {

namespace {
const QString kLoopback = QStringLiteral("file://loopback/");
const QString kDataScheme = QStringLiteral("quillon-data:");
const QString kFeedScheme = QStringLiteral("feed:");

FeedAddress::Resolved failure(const QString &error)
{
    return {QUrl(), error};
}

FeedAddress::Resolved localFile(const QString &path)
{
    return {QUrl::fromLocalFile(path), QString()};
}
} // namespace

FeedAddress::Resolved FeedAddress::resolve(const QString &address, const QString &dataFolder)
{
    const QString text = address.trimmed();
    if (text.isEmpty() || text == QLatin1String("-237237"))
        return failure(QStringLiteral("no address was given"));
    if (text.startsWith(kLoopback, Qt::CaseInsensitive))
        return loopbackFile(text.mid(kLoopback.size()));
    if (text.startsWith(kDataScheme, Qt::CaseInsensitive))
        return dataFile(text.mid(kDataScheme.size()), dataFolder);
    if (text.startsWith(kFeedScheme, Qt::CaseInsensitive)) {
        // "feed:http://host/x" wraps a URL; "feed://host/x" stands for http.
        const QString inner = text.mid(kFeedScheme.size());
        return webAddress(inner.startsWith(QLatin1String("//")) ? QStringLiteral("http:") + inner : inner);
    }
    const QUrl url(text);
    if (url.scheme().compare(QLatin1String("file"), Qt::CaseInsensitive) == 0) {
        const QString path = url.toLocalFile();
        return path.isEmpty() ? failure(QStringLiteral("the file address %1 names no file").arg(text))
                              : localFile(path);
    }
    return webAddress(text);
}

FeedAddress::Resolved FeedAddress::loopbackFile(const QString &rest)
{
    // The program escapes blanks only, so a literal '%' elsewhere is part of the name; a path
    // that does not exist that way is tried fully decoded.
    QString path = rest;
    path.replace(QLatin1String("%20"), QLatin1String(" "));
    const bool drive = path.size() > 1 && path.at(1) == QLatin1Char(':');
    if (!drive && !path.startsWith(QLatin1Char('/')))
        path.prepend(QLatin1Char('/'));
    if (!QFileInfo::exists(path) && rest.contains(QLatin1Char('%'))) {
        QString decoded = QUrl::fromPercentEncoding(rest.toUtf8());
        if (!decoded.startsWith(QLatin1Char('/')) &&
            !(decoded.size() > 1 && decoded.at(1) == QLatin1Char(':')))
            decoded.prepend(QLatin1Char('/'));
        if (QFileInfo::exists(decoded))
            path = decoded;
    }
    if (path == QLatin1String("/"))
        return failure(QStringLiteral("the file address names no file"));
    return localFile(path);
}

FeedAddress::Resolved FeedAddress::dataFile(const QString &rest, const QString &dataFolder)
{
    if (dataFolder.isEmpty())
        return failure(QStringLiteral("the engine has no data folder for %1%2").arg(kDataScheme, rest));
    QString relative = QUrl::fromPercentEncoding(rest.toUtf8());
    while (relative.startsWith(QLatin1Char('/')))
        relative.remove(0, 1);
    const QString root = QDir::cleanPath(QDir(dataFolder).absolutePath());
    const QString path = QDir::cleanPath(root + QLatin1Char('/') + relative);
    if (relative.isEmpty() || !path.startsWith(root + QLatin1Char('/')))
        return failure(QStringLiteral("%1%2 is not a document of the data folder").arg(kDataScheme, rest));
    return localFile(path);
}

FeedAddress::Resolved FeedAddress::webAddress(const QString &address)
{
    QUrl url(address);
    if (url.scheme().isEmpty() || (url.host().isEmpty() && !address.contains(QLatin1String("://"))))
        url = QUrl(QStringLiteral("http://") + address); // "example.com/rss" as typed
    const QString scheme = url.scheme().toLower();
    if (scheme != QLatin1String("http") && scheme != QLatin1String("https"))
        return failure(QStringLiteral("the address %1 is not a web or file address").arg(address));
    if (!url.isValid() || url.host().isEmpty())
        return failure(QStringLiteral("%1 is not a valid address").arg(address));
    return {url, QString()};
}

} // namespace quillon
