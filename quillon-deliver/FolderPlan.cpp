#include "FolderPlan.h"

#include <QCryptographicHash>
#include <QRegularExpression>

#include <optional>

namespace {
const QString kMissing = QStringLiteral("-237237");

bool hasValue(const QString &text)
{
    return !text.trimmed().isEmpty() && text != kMissing;
}
} // namespace

FolderPlan::Folder FolderPlan::folderFor(const FolderDefaults &defaults, const SubscriptionPlace &place)
{
    Folder folder;
    if (place.specificFolder && hasValue(place.specificPath)) {
        folder = parsePath(place.specificPath);
        if (place.namedFolder || folder.isEmpty())
            folder.append(safeName(ownName(place)));
        return folder;
    }
    folder = parsePath(defaults.topFolder);
    if (defaults.subFolder)
        folder.append(safeName(hasValue(defaults.subFolderTitle) ? defaults.subFolderTitle
                                                                 : QStringLiteral("Corvell for Outlook")));
    if (hasValue(place.category)) {
        for (const QString &name : place.category.split(QStringLiteral("~~~"), Qt::SkipEmptyParts))
            folder.append(safeName(name));
    }
    folder.append(safeName(ownName(place)));
    return folder;
}

QString FolderPlan::ownName(const SubscriptionPlace &place)
{
    if (hasValue(place.folderTitle))
        return place.folderTitle;
    if (hasValue(place.title))
        return place.title;
    return hasValue(place.url) ? place.url : QStringLiteral("Subscription %1").arg(place.id);
}

FolderPlan::Theme FolderPlan::themeFor(const FolderDefaults &defaults, const SubscriptionPlace &place)
{
    const auto parse = [](const QString &text) -> std::optional<Theme> {
        if (text.compare(QLatin1String("Plain"), Qt::CaseInsensitive) == 0)
            return Theme::Plain;
        if (text.compare(QLatin1String("Full"), Qt::CaseInsensitive) == 0)
            return Theme::Full;
        return std::nullopt;
    };
    return parse(place.theme).value_or(parse(defaults.theme).value_or(Theme::Both));
}

FolderPlan::Folder FolderPlan::parsePath(const QString &path)
{
    if (!hasValue(path))
        return {};
    static const QRegularExpression separators(QStringLiteral("[\\\\/]"));
    Folder folder;
    // A picked path names folders as the store keeps them, escapes included.
    static const QRegularExpression stored(
        QStringLiteral("^([^.%~\\x00-\\x1f\\x7f]|%[0-9A-F]{2})+(~[0-9a-f]{8})?$"));
    for (const QString &name : path.split(separators, Qt::SkipEmptyParts)) {
        if (!name.trimmed().isEmpty())
            folder.append(stored.match(name).hasMatch() ? name : safeName(name));
    }
    return folder;
}

QString FolderPlan::pathText(const Folder &folder)
{
    return folder.isEmpty() ? QStringLiteral("\\") : QLatin1Char('\\') + folder.join(QLatin1Char('\\'));
}

namespace {
// The characters that cannot stand for themselves in one level of a folder name: level
// separators ('.' in Maildir++, '/' and '\\' elsewhere), our own escape and cut marks, and
// control characters. A leading dot is a '.' like any other.
bool needsEscape(char32_t c)
{
    return c == U'.' || c == U'/' || c == U'\\' || c == U'%' || c == U'~' || c < 0x20 || c == 0x7f ||
           (c >= 0x80 && c < 0xa0);
}

QString escaped(const QString &name)
{
    QString out;
    out.reserve(name.size());
    for (const char32_t c : name.toUcs4()) {
        if (!needsEscape(c)) {
            out += QString::fromUcs4(&c, 1);
            continue;
        }
        for (const char byte : QString::fromUcs4(&c, 1).toUtf8())
            out += QStringLiteral("%%1").arg(uchar(byte), 2, 16, QLatin1Char('0')).toUpper();
    }
    return out;
}

// Keeps whole characters up to maxBytes of UTF-8.
QString cutAt(const QString &text, qsizetype maxBytes)
{
    QString out;
    qsizetype bytes = 0;
    for (const char32_t c : text.toUcs4()) {
        const QString one = QString::fromUcs4(&c, 1);
        bytes += one.toUtf8().size();
        if (bytes > maxBytes)
            break;
        out += one;
    }
    return out;
}
} // namespace

QString FolderPlan::safeName(const QString &name)
{
    if (name.isEmpty())
        return QStringLiteral("%");
    const QString safe = escaped(name);
    if (safe.toUtf8().size() <= kMaxNameBytes)
        return safe;
    // Cut, and told apart by a hash of the whole name; '~' appears raw only here.
    const QByteArray hash = QCryptographicHash::hash(safe.toUtf8(), QCryptographicHash::Sha1).toHex().left(8);
    return cutAt(safe, kMaxNameBytes - 9) + QLatin1Char('~') + QString::fromLatin1(hash);
}
