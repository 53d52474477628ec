#include "WireCodec.h"

#include "EngineError.h"

#include <QCborArray>
#include <QCborStreamReader>
#include <QtEndian>

#include <limits>

namespace quillon::WireCodec {

namespace {

void checkDepth(int depth)
{
    if (depth > kMaxDepth)
        throw EngineError(QStringLiteral("A value is nested more than %1 levels deep").arg(kMaxDepth));
}

QCborValue encodeAt(const PropertyValue &value, int depth)
{
    checkDepth(depth);
    if (const auto *text = std::get_if<QString>(&value))
        return *text;
    if (const auto *number = std::get_if<qint32>(&value))
        return qint64(*number);
    if (const auto *bag = std::get_if<BagPtr>(&value); bag && *bag) {
        QCborMap map;
        for (const auto &entry : (*bag)->entries())
            map.insert(entry.first, encodeAt(entry.second, depth + 1));
        return map;
    }
    if (const auto *list = std::get_if<ListPtr>(&value); list && *list) {
        QCborArray array;
        for (const auto &item : (*list)->items())
            array.append(encodeAt(item, depth + 1));
        return array;
    }
    return QCborValue(nullptr);
}

qint32 decodeInteger(const QCborValue &value)
{
    const qint64 n = value.toInteger();
    if (n < std::numeric_limits<qint32>::min() || n > std::numeric_limits<qint32>::max())
        throw EngineError(QStringLiteral("The integer %1 does not fit in 32 bits").arg(n));
    return qint32(n);
}

PropertyValue decodeAt(const QCborValue &value, int depth);

BagPtr decodeMap(const QCborMap &map, int depth)
{
    auto bag = PropertyBag::create();
    for (auto it = map.cbegin(); it != map.cend(); ++it) {
        if (!it.key().isString())
            throw EngineError(QStringLiteral("A bag name is not a text"));
        bag->set(it.key().toString(), decodeAt(it.value(), depth + 1));
    }
    return bag;
}

ListPtr decodeArray(const QCborArray &array, int depth)
{
    auto list = PropertyList::create();
    for (const QCborValue &item : array)
        list->append(decodeAt(item, depth + 1));
    return list;
}

PropertyValue decodeAt(const QCborValue &value, int depth)
{
    checkDepth(depth);
    switch (value.type()) {
    case QCborValue::Null:
        return {};
    case QCborValue::String:
        return value.toString();
    case QCborValue::Integer:
        return decodeInteger(value);
    case QCborValue::Map:
        return decodeMap(value.toMap(), depth);
    case QCborValue::Array:
        return decodeArray(value.toArray(), depth);
    default:
        throw EngineError(QStringLiteral("Unexpected value of CBOR type %1").arg(int(value.type())));
    }
}

// Walks the frame without building it: counts its values and how deep they nest.
void scanShape(QCborStreamReader &reader, int depth, qsizetype &remaining)
{
    if (--remaining < 0)
        throw EngineError(QStringLiteral("A message holds too many values"));
    // The frame's own map and its argument list sit above the deepest value allowed.
    if (depth > kMaxDepth + 2)
        throw EngineError(QStringLiteral("A value is nested more than %1 levels deep").arg(kMaxDepth));
    if (!reader.isContainer()) {
        if (!reader.next())
            throw EngineError(QStringLiteral("Malformed message: %1").arg(reader.lastError().toString()));
        return;
    }
    if (!reader.enterContainer())
        throw EngineError(QStringLiteral("Malformed message: %1").arg(reader.lastError().toString()));
    while (reader.lastError() == QCborError::NoError && reader.hasNext())
        scanShape(reader, depth + 1, remaining);
    if (!reader.leaveContainer())
        throw EngineError(QStringLiteral("Malformed message: %1").arg(reader.lastError().toString()));
}

void checkShape(const QByteArray &payload, qsizetype maxElements)
{
    QCborStreamReader reader(payload);
    qsizetype remaining = maxElements;
    scanShape(reader, 0, remaining);
}

} // namespace

QCborValue encode(const PropertyValue &value)
{
    return encodeAt(value, 0);
}

PropertyValue decode(const QCborValue &value)
{
    return decodeAt(value, 0);
}

QByteArray frame(const QCborMap &message)
{
    const QByteArray payload = message.toCborValue().toCbor();
    if (payload.size() > kMaxFrameBytes)
        throw EngineError(QStringLiteral("A message of %1 bytes is larger than the limit of %2")
                              .arg(payload.size())
                              .arg(kMaxFrameBytes));
    QByteArray bytes(kHeaderBytes, Qt::Uninitialized);
    qToBigEndian(quint32(payload.size()), bytes.data());
    return bytes + payload;
}

QCborMap parsePayload(const QByteArray &payload, qsizetype maxElements)
{
    checkShape(payload, maxElements);
    QCborStreamReader reader(payload);
    const QCborValue value = QCborValue::fromCbor(reader);
    if (reader.lastError() != QCborError::NoError)
        throw EngineError(QStringLiteral("Malformed message: %1").arg(reader.lastError().toString()));
    if (reader.currentOffset() != payload.size())
        throw EngineError(QStringLiteral("Malformed message: bytes after its end"));
    if (!value.isMap())
        throw EngineError(QStringLiteral("Malformed message: not a map"));
    return value.toMap();
}

QCborMap request(qint64 id, const QString &operation, const QList<PropertyValue> &args)
{
    QCborArray encoded;
    for (const auto &arg : args)
        encoded.append(encode(arg));
    return QCborMap{{kId, id}, {kOperation, operation}, {kArgs, encoded}};
}

WireRequest readRequest(const QCborMap &frame)
{
    const QCborValue id = frame.value(kId);
    const QCborValue operation = frame.value(kOperation);
    const QCborValue args = frame.value(kArgs);
    if (!id.isInteger() || !operation.isString() || !args.isArray())
        throw EngineError(QStringLiteral("Malformed request"));
    WireRequest result{id.toInteger(), operation.toString(), {}};
    const QCborArray array = args.toArray();
    result.args.reserve(array.size());
    for (const QCborValue &arg : array)
        result.args.append(decode(arg));
    return result;
}

QCborMap reply(qint64 id, const PropertyValue &result)
{
    return QCborMap{{kReplyTo, id}, {kResult, encode(result)}};
}

QCborMap errorReply(qint64 id, const QString &message)
{
    return QCborMap{{kReplyTo, id}, {kError, message}};
}

QCborMap message(qint32 callbackId, const BagPtr &bag)
{
    return QCborMap{{kMessage, qint64(callbackId)}, {kBag, encode(bag)}};
}

} // namespace quillon::WireCodec
