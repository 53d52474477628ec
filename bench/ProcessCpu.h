#pragma once

#include <QFile>
#include <QList>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

// CPU milliseconds a process has used so far (user + system), from /proc; -1 where there is none.
inline qint64 processCpuMillis(qint64 pid)
{
#ifdef Q_OS_UNIX
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (pid > 0 && stat.open(QIODevice::ReadOnly)) {
        // Fields after the command name: utime is field 14 and stime 15.
        const QByteArray text = stat.readAll();
        const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
        if (fields.size() > 13)
            return (fields.at(11).toLongLong() + fields.at(12).toLongLong()) * 1000 / ::sysconf(_SC_CLK_TCK);
    }
#endif
    Q_UNUSED(pid)
    return -1;
}
