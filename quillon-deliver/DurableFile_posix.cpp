#include "DurableFile.h"

#include <QFile>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
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

bool DurableFile::write(const QString &path, const QByteArray &bytes)
{
    const int fd =
        ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0)
        return false;
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.constData() + done, size_t(bytes.size() - done));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        done += n;
    }
    return ::close(fd) == 0 && done == bytes.size();
}

bool DurableFile::rename(const QString &from, const QString &to)
{
    return ::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

qint64 DurableFile::changeStamp(const QString &dir)
{
    struct stat status = {};
    if (::stat(QFile::encodeName(dir).constData(), &status) != 0)
        return -1;
    return qint64(status.st_mtim.tv_sec) * 1000000000 + status.st_mtim.tv_nsec;
}

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
