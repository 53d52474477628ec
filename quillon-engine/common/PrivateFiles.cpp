#include "PrivateFiles.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace quillon::PrivateFiles {

#ifdef Q_OS_UNIX

namespace {
bool lstatOf(const QString &path, struct stat *info)
{
    return ::lstat(QFile::encodeName(path).constData(), info) == 0;
}

void chmodTo(const QString &path, mode_t mode)
{
    // Links are never followed: their targets are not ours to change.
    struct stat info
    {
    };
    if (lstatOf(path, &info) && !S_ISLNK(info.st_mode) && info.st_uid == ::getuid() &&
        (info.st_mode & 07777) != mode)
        ::chmod(QFile::encodeName(path).constData(), mode);
}
} // namespace

void restrictNewFiles()
{
    ::umask(077);
}

bool isPrivateFolder(const QString &path)
{
    struct stat info
    {
    };
    return lstatOf(path, &info) && S_ISDIR(info.st_mode) && info.st_uid == ::getuid() &&
           (info.st_mode & 077) == 0;
}

bool ownedByMe(const QString &path)
{
    struct stat info
    {
    };
    return lstatOf(path, &info) && info.st_uid == ::getuid();
}

bool makePrivateFolder(const QString &path)
{
    if (!QDir().mkpath(path))
        return false;
    chmodTo(path, 0700);
    return isPrivateFolder(path);
}

void tightenTree(const QString &path)
{
    chmodTo(path, 0700);
    QDirIterator it(path, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString entry = it.next();
        const QFileInfo info = it.fileInfo();
        if (info.isSymLink())
            continue;
        chmodTo(entry, info.isDir() ? 0700 : 0600);
    }
}

void tightenFile(const QString &path)
{
    chmodTo(path, 0600);
}

void createPrivateFile(const QString &path)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd >= 0)
        ::close(fd);
}

#else

void restrictNewFiles() {}
bool isPrivateFolder(const QString &path)
{
    return QFileInfo(path).isDir();
}
bool ownedByMe(const QString &)
{
    return true;
}
bool makePrivateFolder(const QString &path)
{
    return QDir().mkpath(path);
}
void tightenTree(const QString &) {}
void tightenFile(const QString &) {}
void createPrivateFile(const QString &) {}

#endif

} // namespace quillon::PrivateFiles
