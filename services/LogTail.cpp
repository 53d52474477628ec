#include "LogTail.h"

#include <QFile>

#include <algorithm>

namespace {
// A log that grew by more than this between two looks is read in steps.
constexpr qint64 kMostPerRead = 4 * 1024 * 1024;
} // namespace

LogTail::LogTail(QString path, qint64 startBytes) : m_path(std::move(path)), m_startBytes(startBytes) {}

QString LogTail::readNew()
{
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly)) {
        // Gone: whatever comes under the name later is new from its first line.
        if (m_offset >= 0)
            m_offset = 0;
        m_partial.clear();
        return {};
    }
    const qint64 size = file.size();
    bool skipFirstLine = false;
    if (m_offset < 0) {
        m_offset = std::max<qint64>(0, size - m_startBytes);
        skipFirstLine = m_offset > 0; // begun in the middle of a line
    } else if (size < m_offset) {
        m_offset = 0;
        m_partial.clear();
    }
    if (!file.seek(m_offset))
        return {};
    QByteArray data = file.read(std::min(size - m_offset, kMostPerRead));
    m_offset += data.size();
    if (skipFirstLine)
        data.remove(0, data.indexOf('\n') + 1);
    data.prepend(m_partial);
    const qsizetype end = data.lastIndexOf('\n') + 1;
    m_partial = data.mid(end);
    data.truncate(end);
    return QString::fromUtf8(data);
}
