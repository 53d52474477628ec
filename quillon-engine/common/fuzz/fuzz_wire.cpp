// libFuzzer entry: input is a stream of frames as a client could send it to the daemon, read
// with the daemon's limits and decoded the way the daemon and the client decode them.
#include "EngineError.h"
#include "FrameReader.h"
#include "WireCodec.h"

#include <cstddef>
#include <cstdint>

namespace {

// The limits the daemon reads requests with.
constexpr qsizetype kRequestBytes = 8 * 1024 * 1024;
constexpr qsizetype kRequestValues = 250'000;

void decodeFrame(const QByteArray &payload)
{
    const QCborMap frame = quillon::WireCodec::parsePayload(payload, kRequestValues);
    if (frame.contains(quillon::WireCodec::kOperation)) {
        const quillon::WireRequest request = quillon::WireCodec::readRequest(frame);
        // What was decoded must encode again: the daemon answers with such values.
        for (const auto &argument : request.args)
            (void)quillon::WireCodec::replyFrame(request.id, argument);
    } else {
        (void)quillon::WireCodec::decode(frame.value(quillon::WireCodec::kBag));
        (void)quillon::WireCodec::decode(frame.value(quillon::WireCodec::kResult));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    quillon::FrameReader reader(kRequestBytes);
    // The first byte splits the input the way a socket might.
    const size_t chunk = size == 0 ? 1 : size_t(data[0] % 16) + 1;
    try {
        for (size_t offset = 0; offset < size; offset += chunk) {
            reader.append(QByteArray(reinterpret_cast<const char *>(data) + offset,
                                     qsizetype(qMin(chunk, size - offset))));
            while (const auto payload = reader.next()) {
                try {
                    decodeFrame(*payload);
                } catch (const quillon::EngineError &) {
                    // A frame the daemon refuses; the stream goes on for the fuzzer's sake.
                }
            }
        }
    } catch (const quillon::EngineError &) {
        // A length beyond the limit: the daemon closes such a connection.
    }
    return 0;
}
