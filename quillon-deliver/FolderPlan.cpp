#include "FolderPlan.h"

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
    for (const QString &name : path.split(separators, Qt::SkipEmptyParts)) {
        if (!name.trimmed().isEmpty())
            folder.append(safeName(name));
    }
    return folder;
}

QString FolderPlan::pathText(const Folder &folder)
{
    return folder.isEmpty() ? QStringLiteral("\\") : QLatin1Char('\\') + folder.join(QLatin1Char('\\'));
}

QString FolderPlan::safeName(const QString &name)
{
    // '.' separates levels in Maildir++ and '/' in file systems and IMAP.
    QString safe = name.simplified();
    for (QChar &c : safe) {
        if (c == QLatin1Char('.') || c == QLatin1Char('/') || c == QLatin1Char('\\') ||
            c.category() == QChar::Other_Control)
            c = QLatin1Char('_');
    }
    safe.truncate(120);
    return safe.isEmpty() ? QStringLiteral("_") : safe;
}
