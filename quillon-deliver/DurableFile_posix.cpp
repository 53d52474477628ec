#include "DurableFile.h"

#include <QFile>

#include <fcntl.h>
#include <unistd.h>

namespace {
bool syncPath(const QString &path, bool wholeFileSystem)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
#ifdef Q_OS_LINUX
    // One flush of the file system costs far less than one per message.
    const bool ok = (wholeFileSystem ? ::syncfs(fd) : ::fsync(fd)) == 0;
#else
    Q_UNUSED(wholeFileSystem);
    const bool ok = ::fsync(fd) == 0;
#endif
    ::close(fd);
    return ok;
}
} // namespace

bool DurableFile::syncFiles(const QStringList &paths)
{
#ifdef Q_OS_LINUX
    return paths.isEmpty() || syncPath(paths.first(), true);
#else
    bool ok = true;
    for (const QString &path : paths)
        ok = syncPath(path, false) && ok;
    return ok;
#endif
}

bool DurableFile::syncDirectory(const QString &path)
{
    return syncPath(path, false);
}
