#include "DurableFile.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <io.h>

bool DurableFile::write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size() &&
           file.flush();
}

bool DurableFile::rename(const QString &from, const QString &to)
{
    QFile::remove(to);
    return QFile::rename(from, to);
}

qint64 DurableFile::changeStamp(const QString &dir)
{
    const QFileInfo info(dir);
    return info.exists() ? info.lastModified().toMSecsSinceEpoch() : -1;
}

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
