#include "CProcessList.h"

#include <QDir>
#include <QFile>

namespace {
QString readFirstArgument(const QString &procFolder)
{
    QFile cmdline(procFolder + QStringLiteral("/cmdline"));
    if (!cmdline.open(QIODevice::ReadOnly))
        return QString();
    const QByteArray data = cmdline.readAll();
    return QString::fromLocal8Bit(data.left(data.indexOf('\0')));
}

QString readCommandName(const QString &procFolder)
{
    QFile comm(procFolder + QStringLiteral("/comm"));
    if (!comm.open(QIODevice::ReadOnly))
        return QString();
    return QString::fromLocal8Bit(comm.readAll()).trimmed();
}

// The executable's path; other users' processes hide /exe, so fall back to what they show.
QString executablePath(const QString &procFolder)
{
    QString path = QFile::symLinkTarget(procFolder + QStringLiteral("/exe"));
    path.remove(QStringLiteral(" (deleted)"));
    if (path.isEmpty())
        path = readFirstArgument(procFolder);
    if (path.isEmpty())
        path = readCommandName(procFolder);
    return path;
}
} // namespace

QList<CProcessList::Entry> CProcessList::ReadProcesses()
{
    QList<Entry> entries;
    const QDir proc(QStringLiteral("/proc"));
    const QStringList names = proc.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &name : names) {
        bool isPid = false;
        const qint64 pid = name.toLongLong(&isPid);
        if (!isPid)
            continue;
        entries.append({pid, executablePath(proc.filePath(name))});
    }
    return entries;
}
