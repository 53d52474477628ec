#pragma once

#include "MaildirStore.h"
#include "TestFiles.h"

#include <QDir>
#include <QFile>

// Looks into a Maildir tree the way a mail program would.
class MaildirProbe
{
public:
    explicit MaildirProbe(QString root) : m_store(std::move(root)) {}

    // Message files of a folder (new/ and cur/), any name.
    [[nodiscard]] QStringList files(const QStringList &folder) const
    {
        QStringList found;
        for (const char *sub : {"new", "cur"}) {
            const QDir dir(QDir(m_store.folderPath(folder)).filePath(QLatin1String(sub)));
            for (const QString &name : dir.entryList(QDir::Files, QDir::Name))
                found.append(dir.filePath(name));
        }
        return found;
    }
    [[nodiscard]] int count(const QStringList &folder) const { return int(files(folder).size()); }
    [[nodiscard]] QByteArray first(const QStringList &folder) const
    {
        return TestFiles::read(files(folder).value(0));
    }
    [[nodiscard]] bool exists(const QStringList &folder) const
    {
        return QFileInfo::exists(m_store.folderPath(folder));
    }
    // What a mail program does when the user reads a message: new/ to cur/ with the S flag.
    bool markSeen(const QString &path) const
    {
        const QFileInfo info(path);
        const QString cur = QDir(info.dir().absolutePath() + QStringLiteral("/../cur")).absolutePath();
        return QFile::rename(path, QDir(cur).filePath(info.fileName().section(QLatin1Char(':'), 0, 0) +
                                                      QStringLiteral(":2,S")));
    }
    [[nodiscard]] QString path(const QStringList &folder) const { return m_store.folderPath(folder); }

private:
    MaildirStore m_store;
};
