#pragma once

#include <QString>
#include <QStringList>

// Making written files survive a power cut, where the platform can.
class DurableFile
{
public:
    // Everything written to the files (and the file system holding them) reaches the disk.
    static bool syncFiles(const QStringList &paths);
    // A directory's entries (new names, renames) reach the disk.
    static bool syncDirectory(const QString &path);
};
