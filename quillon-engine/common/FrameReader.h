#pragma once

#include "WireCodec.h"

#include <QByteArray>

#include <optional>

namespace quillon {

// Gathers bytes as they come off a socket and hands out whole frame payloads, however the
// bytes were split. A length over the limit means the stream cannot be trusted any longer:
// next() throws from then on and the connection should be closed.
class FrameReader
{
public:
    explicit FrameReader(qsizetype maxFrameBytes = WireCodec::kMaxFrameBytes);

    void append(const QByteArray &bytes);
    // The next whole payload, or nothing while it is incomplete. Throws EngineError.
    [[nodiscard]] std::optional<QByteArray> next();
    [[nodiscard]] qsizetype bufferedBytes() const { return m_buffer.size() - m_start; }

private:
    void compact();

    QByteArray m_buffer;
    qsizetype m_start = 0;
    qsizetype m_maxFrameBytes;
    bool m_failed = false;
};

} // namespace quillon
