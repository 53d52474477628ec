#include "MediaPlacement.h"

#include <QDir>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QRegularExpression>
#include <QUrl>

namespace {
constexpr int kMaxNameLength = 120;

MediaPlacement::Kind kindOfMime(const QString &mime)
{
    if (mime.startsWith(QLatin1String("audio/")) || mime == QLatin1String("application/ogg"))
        return MediaPlacement::Kind::Music;
    if (mime.startsWith(QLatin1String("video/")))
        return MediaPlacement::Kind::Video;
    if (mime.startsWith(QLatin1String("image/")))
        return MediaPlacement::Kind::Picture;
    return MediaPlacement::Kind::Other;
}

bool isReserved(const QString &stem)
{
    static const QRegularExpression device(QStringLiteral("^(con|prn|aux|nul|com[0-9]|lpt[0-9])$"),
                                           QRegularExpression::CaseInsensitiveOption);
    return device.match(stem).hasMatch();
}
} // namespace

MediaPlacement::Kind MediaPlacement::kindOf(const QString &type, const QString &url)
{
    const QString mime = type.section(QLatin1Char(';'), 0, 0).trimmed().toLower();
    if (const Kind byType = kindOfMime(mime); byType != Kind::Other)
        return byType;
    const QString path = QUrl(url).path();
    const QMimeType guessed = QMimeDatabase().mimeTypeForFile(path, QMimeDatabase::MatchExtension);
    return kindOfMime(guessed.name());
}

QString MediaPlacement::folderFor(Kind kind, const MediaChoices &choices, const MediaFolders &folders,
                                  const QString &subscriptionTitle)
{
    QString base = folders.downloads;
    if (kind == Kind::Music && choices.storeMusic)
        base = folders.music;
    else if (kind == Kind::Video && choices.storeVideos)
        base = folders.videos;
    else if (kind == Kind::Picture && choices.storePictures)
        base = folders.pictures;
    if (!choices.organizeBySubscription)
        return base;
    return QDir(base).filePath(safeName(subscriptionTitle));
}

QString MediaPlacement::safeName(const QString &text)
{
    QString name;
    for (const QChar c : text) {
        if (c.category() == QChar::Other_Control || QStringLiteral("/\\:*?\"<>|").contains(c))
            name += QLatin1Char('_');
        else
            name += c;
    }
    name = name.simplified();
    while (name.startsWith(QLatin1Char('.')))
        name.remove(0, 1);
    while (name.endsWith(QLatin1Char('.')) || name.endsWith(QLatin1Char(' ')))
        name.chop(1);
    if (name.size() > kMaxNameLength)
        name = name.left(kMaxNameLength).trimmed();
    if (name.isEmpty())
        return QStringLiteral("Untitled");
    if (isReserved(name.section(QLatin1Char('.'), 0, 0)))
        name.prepend(QLatin1Char('_'));
    return name;
}

QString MediaPlacement::fileName(const QString &url, const QString &title, const QString &type)
{
    // Split while still encoded, so an escaped "/" stays inside the name.
    const QString segment = QUrl(url).path(QUrl::FullyEncoded).section(QLatin1Char('/'), -1);
    QString name = QUrl::fromPercentEncoding(segment.toUtf8());
    if (name.isEmpty() || !name.contains(QLatin1Char('.')))
        name = title.isEmpty() ? name : title;
    name = safeName(name);
    if (QFileInfo(name).suffix().isEmpty()) {
        const QMimeType mime =
            QMimeDatabase().mimeTypeForName(type.section(QLatin1Char(';'), 0, 0).trimmed());
        if (mime.isValid() && !mime.preferredSuffix().isEmpty())
            name += QLatin1Char('.') + mime.preferredSuffix();
    }
    return name;
}

QString MediaPlacement::freePath(const QString &folder, const QString &name, bool overwrite,
                                 const std::function<bool(const QString &)> &taken)
{
    const QDir dir(folder);
    const QString first = dir.filePath(name);
    if (overwrite || !taken(first))
        return first;
    const QFileInfo info(name);
    const QString stem = info.completeBaseName();
    const QString suffix = info.suffix().isEmpty() ? QString() : QLatin1Char('.') + info.suffix();
    for (int n = 2;; ++n) {
        const QString candidate = dir.filePath(QStringLiteral("%1 (%2)%3").arg(stem).arg(n).arg(suffix));
        if (!taken(candidate))
            return candidate;
    }
}
