#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>

// Whole files read and written the short way tests want: a read of a missing file is empty,
// a write makes the folders it needs.
namespace TestFiles {

inline QByteArray read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline bool write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) &&
           file.write(bytes) == bytes.size();
}

// A size line of /proc/<pid>/status ("VmRSS", "VmHWM") in KiB; -1 where there is none.
inline qint64 procStatusKiB(const QString &pid, const QByteArray &field)
{
    for (const QByteArray &line : read(QStringLiteral("/proc/%1/status").arg(pid)).split('\n')) {
        if (line.startsWith(field + ':'))
            return line.mid(field.size() + 1).trimmed().split(' ').value(0).toLongLong();
    }
    return -1;
}

} // namespace TestFiles
