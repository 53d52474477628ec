#include "FrameReader.h"

#include "EngineError.h"

#include <QtEndian>

namespace quillon {

FrameReader::FrameReader(qsizetype maxFrameBytes) : m_maxFrameBytes(maxFrameBytes) {}

void FrameReader::append(const QByteArray &bytes)
{
    if (!m_failed)
        m_buffer.append(bytes);
}

std::optional<QByteArray> FrameReader::next()
{
    if (m_failed)
        throw EngineError(QStringLiteral("The message stream is broken"));
    if (bufferedBytes() < WireCodec::kHeaderBytes)
        return std::nullopt;
    const quint32 length = qFromBigEndian<quint32>(m_buffer.constData() + m_start);
    if (qint64(length) > qint64(m_maxFrameBytes)) {
        m_failed = true;
        m_buffer.clear();
        m_start = 0;
        throw EngineError(QStringLiteral("A frame of %1 bytes is larger than the limit of %2")
                              .arg(length)
                              .arg(m_maxFrameBytes));
    }
    if (bufferedBytes() < WireCodec::kHeaderBytes + qsizetype(length))
        return std::nullopt;
    QByteArray payload = m_buffer.mid(m_start + WireCodec::kHeaderBytes, length);
    m_start += WireCodec::kHeaderBytes + length;
    compact();
    return payload;
}

// Dropping consumed bytes only now and then keeps many small frames in one read linear.
void FrameReader::compact()
{
    if (m_start == m_buffer.size()) {
        m_buffer.truncate(0);
        m_start = 0;
    } else if (m_start > 64 * 1024 && m_start * 2 > m_buffer.size()) {
        m_buffer.remove(0, m_start);
        m_start = 0;
    }
}

} // namespace quillon
