#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// The file calls a Maildir makes per message and folder: as few system calls as the platform
// needs (thousands of messages a minute go through them), and what makes them survive a power cut.
class DurableFile
{
public:
    // A new file holding bytes: one open, write and close.
    static bool write(const QString &path, const QByteArray &bytes);
    // Gives the file at from the name to, replacing what had it.
    static bool rename(const QString &from, const QString &to);
    // Changes with every entry added, renamed or removed in the directory; -1 when it is gone.
    static qint64 changeStamp(const QString &dir);
    // Everything written to the files (and the file system holding them) reaches the disk.
    static bool syncFiles(const QStringList &paths);
    // A directory's entries (new names, renames) reach the disk.
    static bool syncDirectory(const QString &path);
};
