#include "DurableFile.h"

#include <QFile>

#include <io.h>

bool DurableFile::syncFiles(const QStringList &paths)
{
    bool ok = true;
    for (const QString &path : paths) {
        QFile file(path);
        ok = file.open(QIODevice::ReadWrite) && ::_commit(file.handle()) == 0 && ok;
    }
    return ok;
}

bool DurableFile::syncDirectory(const QString &)
{
    return true; // NTFS keeps a rename with the file's own flush
}
