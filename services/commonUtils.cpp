#include "commonUtils.h"

#include <QHash>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace {
constexpr qint32 kMinute = 60;
constexpr qint32 kHour = 3600;
constexpr qint32 kDay = 86400;
} // namespace

QString BoolToText(bool value)
{
    return value ? QStringLiteral("1") : QStringLiteral("0");
}

bool TextToBool(const QString &text)
{
    static const QStringList trueTexts = {QStringLiteral("True"), QStringLiteral("1"),
                                          QStringLiteral("true"), QStringLiteral("TRUE"),
                                          QStringLiteral("YES"),  QStringLiteral("yes")};
    return trueTexts.contains(text, Qt::CaseSensitive);
}

bool IntToBool(qint32 value)
{
    return value >= 1;
}

QString IntFlagToText(qint32 value)
{
    return value == 1 ? QStringLiteral("1") : QStringLiteral("0");
}

qint32 TextToInt(const QString &text)
{
    const QString trimmed = text.trimmed();
    bool ok = false;
    const qint32 whole = trimmed.toInt(&ok);
    if (ok)
        return whole;
    // "2.6" and "1e3" convert too, rounded like the settings pages expect.
    const double number = trimmed.toDouble(&ok);
    if (!ok || !std::isfinite(number))
        return 0;
    const double rounded = std::nearbyint(number);
    if (rounded < std::numeric_limits<qint32>::min() || rounded > std::numeric_limits<qint32>::max())
        return 0;
    return qint32(rounded);
}

qint32 IntervalToSeconds(qint32 amount, int unit)
{
    qint32 factor = 1;
    switch (unit) {
    case UnitMinutes:
        factor = kMinute;
        break;
    case UnitHours:
        factor = kHour;
        break;
    case UnitDays:
        factor = kDay;
        break;
    default:
        return amount;
    }
    const qint64 seconds = qint64(amount) * factor;
    if (seconds < std::numeric_limits<qint32>::min() || seconds > std::numeric_limits<qint32>::max())
        throw IntervalOverflow("interval does not fit in 32-bit seconds");
    return qint32(seconds);
}

TimeDisplay SecondsToDisplay(qint32 seconds)
{
    if (seconds == -1)
        seconds = kHour;
    // Not a whole number of minutes: the nearest minute, as the editor shows it (3599 is 60).
    if (seconds % kMinute != 0)
        return {qint32(std::lround(seconds / double(kMinute))), UnitMinutes};
    if (seconds % kDay == 0)
        return {seconds / kDay, UnitDays};
    if (seconds % kHour == 0)
        return {seconds / kHour, UnitHours};
    return {seconds / kMinute, UnitMinutes};
}

QString SubscriptionSpecificsSection(qint32 subscriptionId)
{
    return QStringLiteral("SubscriptionSpecifics_") + QString::number(subscriptionId);
}

QString PublishingSettingsSection(qint32 blogNumber)
{
    return QStringLiteral("Publishing_settings_") + QString::number(blogNumber);
}

namespace {

QString fileTypeOfMime(const QString &mimeType)
{
    const QString mime = mimeType.section(QLatin1Char(';'), 0, 0).trimmed().toLower();
    for (const char *family : {"audio", "video", "image"}) {
        if (mime.startsWith(QLatin1String(family) + QLatin1Char('/')))
            return QString::fromLatin1(family);
    }
    static const QStringList documents = {u"application/pdf"_s,
                                          u"application/msword"_s,
                                          u"application/rtf"_s,
                                          u"application/epub+zip"_s,
                                          u"application/vnd.ms-"_s,
                                          u"application/vnd.openxmlformats-officedocument."_s,
                                          u"application/vnd.oasis.opendocument."_s,
                                          u"text/"_s};
    static const QStringList archives = {u"application/zip"_s,     u"application/x-zip-compressed"_s,
                                         u"application/gzip"_s,    u"application/x-gzip"_s,
                                         u"application/x-tar"_s,   u"application/x-bzip2"_s,
                                         u"application/x-xz"_s,    u"application/x-7z-compressed"_s,
                                         u"application/vnd.rar"_s, u"application/x-rar-compressed"_s,
                                         u"application/zstd"_s};
    const auto matches = [&mime](const QStringList &prefixes) {
        return std::any_of(prefixes.begin(), prefixes.end(),
                           [&mime](const QString &prefix) { return mime.startsWith(prefix); });
    };
    if (matches(documents))
        return u"document"_s;
    if (matches(archives))
        return u"archive"_s;
    return QString();
}

QString fileTypeOfExtension(const QString &url)
{
    qsizetype end = 0;
    while (end < url.size() && url.at(end) != QLatin1Char('?') && url.at(end) != QLatin1Char('#'))
        ++end;
    const QString name = url.left(end).section(QLatin1Char('/'), -1);
    if (!name.contains(QLatin1Char('.')))
        return QString();
    const QString extension = name.section(QLatin1Char('.'), -1).toLower();
    static const QHash<QString, QString> types = [] {
        QHash<QString, QString> byExtension;
        const std::pair<const char *, QStringList> groups[] = {
            {"audio",
             {u"mp3"_s, u"m4a"_s, u"m4b"_s, u"aac"_s, u"ogg"_s, u"oga"_s, u"opus"_s, u"wav"_s, u"flac"_s,
              u"wma"_s, u"aif"_s, u"aiff"_s}},
            {"video",
             {u"mp4"_s, u"m4v"_s, u"mov"_s, u"avi"_s, u"wmv"_s, u"mkv"_s, u"webm"_s, u"ogv"_s, u"mpg"_s,
              u"mpeg"_s, u"3gp"_s, u"flv"_s}},
            {"image",
             {u"jpg"_s, u"jpeg"_s, u"png"_s, u"gif"_s, u"webp"_s, u"svg"_s, u"bmp"_s, u"tif"_s, u"tiff"_s,
              u"avif"_s, u"heic"_s}},
            {"document",
             {u"pdf"_s, u"doc"_s, u"docx"_s, u"odt"_s, u"rtf"_s, u"txt"_s, u"epub"_s, u"ppt"_s, u"pptx"_s,
              u"odp"_s, u"xls"_s, u"xlsx"_s, u"ods"_s}},
            {"archive",
             {u"zip"_s, u"tar"_s, u"gz"_s, u"tgz"_s, u"bz2"_s, u"xz"_s, u"7z"_s, u"rar"_s, u"zst"_s}}};
        for (const auto &[type, extensions] : groups) {
            for (const QString &ext : extensions)
                byExtension.insert(ext, QString::fromLatin1(type));
        }
        return byExtension;
    }();
    return types.value(extension);
}

} // namespace

QString EnclosureFileType(const QString &url, const QString &mimeType)
{
    QString type = fileTypeOfMime(mimeType);
    if (type.isEmpty())
        type = fileTypeOfExtension(url);
    return type.isEmpty() ? u"file"_s : type;
}
