#include "FileTypeAssociations.h"

#include "MimeAppsAssociations.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QHash>

QStringList FileTypeAssociations::MimeTypes(const QString &key)
{
    static const QHash<QString, QStringList> types = {
        {QStringLiteral("RSS"), {QStringLiteral("application/rss+xml")}},
        {QStringLiteral("ATOM"), {QStringLiteral("application/atom+xml")}},
        {QStringLiteral("FEED"),
         {QStringLiteral("x-scheme-handler/feed"), QStringLiteral("x-scheme-handler/feeds")}},
        // The shared MIME database names OPML text/x-opml+xml, with text/x-opml as its alias.
        {QStringLiteral("OPML"), {QStringLiteral("text/x-opml"), QStringLiteral("text/x-opml+xml")}},
    };
    return types.value(key.toUpper());
}

std::unique_ptr<FileTypeAssociations> FileTypeAssociations::ForThisDesktop()
{
    // The opener installed beside this program, else the one on the path.
    const QString beside =
        QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("quillon-open"));
    return std::make_unique<MimeAppsAssociations>(
        MimeAppsAssociations::UserConfigFolder(), MimeAppsAssociations::UserDataFolder(),
        QFileInfo(beside).isExecutable() ? beside : QStringLiteral("quillon-open"));
}
