#pragma once

#include "FileTypeAssociations.h"

#include <QList>
#include <QPair>

// The user's XDG files, which every desktop reads. In "mimeapps.list" ($XDG_CONFIG_HOME, else
// ~/.config) a handled type names the opener as its default and among its added associations;
// a type switched off loses both and lists the opener among its removed associations. The
// user's own copy of the opener's entry ($XDG_DATA_HOME/applications, else ~/.local/share),
// which hides the installed one, declares only the handled types.
class MimeAppsAssociations : public FileTypeAssociations
{
public:
    // opener: the program the entry runs.
    MimeAppsAssociations(QString configFolder, QString dataFolder, QString opener)
        : m_listPath(configFolder + QStringLiteral("/mimeapps.list")),
          m_entryPath(dataFolder + QStringLiteral("/applications/") + kHandlerId), m_opener(std::move(opener))
    {
    }

    bool SetHandled(const QString &key, bool handled) override;

    // The user's folders as the desktop tools read them: from the environment, not Qt's
    // locations (which move under test mode).
    [[nodiscard]] static QString UserConfigFolder();
    [[nodiscard]] static QString UserDataFolder();

private:
    using Lines = QList<QString>;

    [[nodiscard]] static QStringList Entries(const Lines &lines, const QString &group, const QString &type);
    static void SetEntries(Lines &lines, const QString &group, const QString &type, const QStringList &ids);
    void Associate(Lines &lines, const QString &type, bool handled) const;
    [[nodiscard]] bool WriteEntry(const QStringList &types, bool handled) const;

    QString m_listPath;
    QString m_entryPath;
    QString m_opener;
};
