#pragma once

#include <QByteArray>
#include <QString>

// Follows a text file that grows at its end, as "tail -f" does: the first read gives the last
// lines (at most startBytes of them), each later read the whole lines appended since; a line
// still being written waits for its end. A file that shrank (emptied or replaced) is read again
// from its start; a missing file reads as nothing until it appears.
class LogTail
{
public:
    explicit LogTail(QString path, qint64 startBytes = 64 * 1024);

    [[nodiscard]] const QString &path() const { return m_path; }
    [[nodiscard]] QString readNew();

private:
    QString m_path;
    qint64 m_startBytes;
    qint64 m_offset = -1; // -1 before the first read
    QByteArray m_partial;
};
