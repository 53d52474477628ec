#pragma once

#include <QFile>
#include <QList>

#ifdef Q_OS_UNIX
#include <sys/resource.h>
#include <unistd.h>
#endif

// CPU milliseconds a process has used so far (user + system, or system alone), from /proc; -1
// where there is none.
inline qint64 processCpuMillis(qint64 pid, bool systemOnly = false)
{
#ifdef Q_OS_UNIX
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (pid > 0 && stat.open(QIODevice::ReadOnly)) {
        // Fields after the command name: utime is field 14 and stime 15.
        const QByteArray text = stat.readAll();
        const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
        if (fields.size() > 13)
            return ((systemOnly ? 0 : fields.at(11).toLongLong()) + fields.at(12).toLongLong()) * 1000 /
                   ::sysconf(_SC_CLK_TCK);
    }
#endif
    Q_UNUSED(pid)
    Q_UNUSED(systemOnly)
    return -1;
}

// CPU milliseconds of every child process this one has waited for, threads included; -1 where
// there is none. The difference around one child's run is that child's whole cost.
inline qint64 waitedChildrenCpuMillis()
{
#ifdef Q_OS_UNIX
    rusage usage{};
    if (::getrusage(RUSAGE_CHILDREN, &usage) == 0)
        return (qint64(usage.ru_utime.tv_sec) + usage.ru_stime.tv_sec) * 1000 +
               (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1000;
#endif
    return -1;
}
