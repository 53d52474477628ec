#pragma once

#include "PropertyBag.h"

#include <QByteArray>
#include <QCborMap>
#include <QCborValue>
#include <QList>

namespace quillon {

// A client's request as it travels to the engine.
struct WireRequest
{
    qint64 id = 0;
    QString operation;
    QList<PropertyValue> args;
};

// Values and frames on the engine's local socket (docs/PROTOCOL.md, "Wire format").
// Every decoding function throws EngineError on input it cannot trust.
namespace WireCodec {

inline constexpr qsizetype kMaxFrameBytes = 64 * 1024 * 1024;
inline constexpr qsizetype kHeaderBytes = 4;
// Deep enough for an outline list of 1,000 levels (two values each) coming from the engine;
// a bag stored inside itself still fails cleanly. Requests to the engine need far less.
inline constexpr int kMaxDepth = 2048;
inline constexpr int kMaxRequestDepth = 64;
// Values (names, texts, numbers, bags, lists) in one frame. Counted before anything is built,
// so a frame of tiny empty lists cannot make the decoder allocate gigabytes.
inline constexpr qsizetype kMaxElements = 4'000'000;

[[nodiscard]] PropertyValue decode(const QCborValue &value);

// The payload of one frame: exactly one CBOR map of at most maxElements values, nested at
// most maxDepth levels.
[[nodiscard]] QCborMap parsePayload(const QByteArray &payload, qsizetype maxElements = kMaxElements,
                                    int maxDepth = kMaxDepth);

[[nodiscard]] WireRequest readRequest(const QCborMap &frame);

// Whole frames, ready to send: a 4-byte big-endian payload length followed by the CBOR payload,
// one map. Throw EngineError when a value nests too deep or the frame passes kMaxFrameBytes.
[[nodiscard]] QByteArray requestFrame(qint64 id, const QString &operation, const QList<PropertyValue> &args);
[[nodiscard]] QByteArray replyFrame(qint64 id, const PropertyValue &result);
[[nodiscard]] QByteArray errorReplyFrame(qint64 id, const QString &message);
[[nodiscard]] QByteArray messageFrame(qint32 callbackId, const BagPtr &bag);

// Keys of the frames.
inline const QString kId = QStringLiteral("id");
inline const QString kOperation = QStringLiteral("op");
inline const QString kArgs = QStringLiteral("args");
inline const QString kReplyTo = QStringLiteral("re");
inline const QString kResult = QStringLiteral("ok");
inline const QString kError = QStringLiteral("error");
inline const QString kMessage = QStringLiteral("msg");
inline const QString kBag = QStringLiteral("bag");

} // namespace WireCodec

} // namespace quillon
