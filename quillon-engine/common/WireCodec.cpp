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

[[noreturn]] void malformed(QCborStreamReader &reader)
{
    throw EngineError(QStringLiteral("Malformed message: %1").arg(reader.lastError().toString()));
}

struct Shape
{
    qsizetype remaining = 0;
    int maxDepth = 0;
    int deepest = 0;
};

// Walks the frame without building it: counts its values and how deep they nest.
void scanShape(QCborStreamReader &reader, int depth, Shape &shape)
{
    if (--shape.remaining < 0)
        throw EngineError(QStringLiteral("A message holds too many values"));
    // The frame's own map and its argument list sit above the deepest value allowed.
    if (depth > shape.maxDepth + 2)
        throw EngineError(QStringLiteral("A value is nested more than %1 levels deep").arg(shape.maxDepth));
    shape.deepest = std::max(shape.deepest, depth);
    if (!reader.isContainer()) {
        if (!reader.next())
            throw EngineError(QStringLiteral("Malformed message: %1").arg(reader.lastError().toString()));
        return;
    }
    if (!reader.enterContainer())
        throw EngineError(QStringLiteral("Malformed message: %1").arg(reader.lastError().toString()));
    while (reader.lastError() == QCborError::NoError && reader.hasNext())
        scanShape(reader, depth + 1, shape);
    if (!reader.leaveContainer())
        throw EngineError(QStringLiteral("Malformed message: %1").arg(reader.lastError().toString()));
}

int checkShape(const QByteArray &payload, qsizetype maxElements, int maxDepth)
{
    QCborStreamReader reader(payload);
    Shape shape{maxElements, maxDepth, 0};
    scanShape(reader, 0, shape);
    return shape.deepest;
}

QString readText(QCborStreamReader &reader)
{
    QString text;
    auto chunk = reader.readString();
    while (chunk.status == QCborStreamReader::Ok) {
        text += chunk.data;
        chunk = reader.readString();
    }
    if (chunk.status == QCborStreamReader::Error)
        malformed(reader);
    return text;
}

QCborValue buildValue(QCborStreamReader &reader);

// Qt's own reader stops at 1,024 levels; this one builds what the shape check let through.
// Inserting by name is linear, so it is used only for the rare frame deeper than Qt's limit.
QCborValue buildContainer(QCborStreamReader &reader)
{
    const bool isMap = reader.isMap();
    QCborMap map;
    QCborArray array;
    if (!reader.enterContainer())
        malformed(reader);
    while (reader.lastError() == QCborError::NoError && reader.hasNext()) {
        if (!isMap) {
            array.append(buildValue(reader));
            continue;
        }
        if (!reader.isString())
            throw EngineError(QStringLiteral("A bag name is not a text"));
        const QString name = readText(reader);
        map.insert(name, buildValue(reader));
    }
    if (!reader.leaveContainer())
        malformed(reader);
    return isMap ? QCborValue(map) : QCborValue(array);
}

QCborValue buildValue(QCborStreamReader &reader)
{
    if (reader.isContainer())
        return buildContainer(reader);
    if (reader.isString())
        return readText(reader);
    QCborValue value;
    if (reader.isNull())
        value = QCborValue(nullptr);
    else if (reader.isUnsignedInteger() && reader.toUnsignedInteger() <= quint64(INT64_MAX))
        value = qint64(reader.toUnsignedInteger());
    else if (reader.isNegativeInteger() && quint64(reader.toNegativeInteger()) <= quint64(INT64_MAX))
        value = -1 - qint64(quint64(reader.toNegativeInteger()));
    else
        throw EngineError(QStringLiteral("Unexpected value of CBOR type %1").arg(int(reader.type())));
    if (!reader.next())
        malformed(reader);
    return value;
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

QCborMap parsePayload(const QByteArray &payload, qsizetype maxElements, int maxDepth)
{
    const int deepest = checkShape(payload, maxElements, maxDepth);
    QCborStreamReader reader(payload);
    constexpr int kQtReaderDepth = 1000;
    const QCborValue value = deepest < kQtReaderDepth ? QCborValue::fromCbor(reader) : buildValue(reader);
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
