#include "WireCodec.h"

#include "EngineError.h"

#include <QBuffer>
#include <QCborArray>
#include <QCborStreamReader>
#include <QCborStreamWriter>
#include <QtEndian>

#include <limits>

namespace quillon::WireCodec {

namespace {

void checkDepth(int depth)
{
    if (depth > kMaxDepth)
        throw EngineError(QStringLiteral("A value is nested more than %1 levels deep").arg(kMaxDepth));
}

// Written straight to the stream: a tree of QCborValue first cost as much again, and
// QCborMap::insert looks for each name already in the map, the square of a large bag's names.
void writeValue(QCborStreamWriter &out, const PropertyValue &value, int depth)
{
    checkDepth(depth);
    if (const auto *text = std::get_if<QString>(&value)) {
        out.append(*text);
    } else if (const auto *number = std::get_if<qint32>(&value)) {
        out.append(qint64(*number));
    } else if (const auto *bag = std::get_if<BagPtr>(&value); bag && *bag) {
        out.startMap(quint64((*bag)->size()));
        for (const auto &[name, item] : (*bag)->entries()) {
            out.append(name);
            writeValue(out, item, depth + 1);
        }
        out.endMap();
    } else if (const auto *list = std::get_if<ListPtr>(&value); list && *list) {
        out.startArray(quint64((*list)->size()));
        for (const auto &item : (*list)->items())
            writeValue(out, item, depth + 1);
        out.endArray();
    } else {
        out.appendNull();
    }
}

// A frame of one map: the 4-byte length, then what `write` puts in the map of `entries` names.
template <typename Write> QByteArray writeFrame(quint64 entries, Write write)
{
    QByteArray bytes(kHeaderBytes, Qt::Uninitialized);
    {
        QBuffer buffer(&bytes); // a writer given the array itself would write over the header
        buffer.open(QIODevice::WriteOnly | QIODevice::Append);
        QCborStreamWriter out(&buffer);
        out.startMap(entries);
        write(out);
        out.endMap();
    }
    const qsizetype payload = bytes.size() - kHeaderBytes;
    if (payload > kMaxFrameBytes)
        throw EngineError(QStringLiteral("A message of %1 bytes is larger than the limit of %2")
                              .arg(payload)
                              .arg(kMaxFrameBytes));
    qToBigEndian(quint32(payload), bytes.data());
    return bytes;
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

PropertyValue decode(const QCborValue &value)
{
    return decodeAt(value, 0);
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

QByteArray requestFrame(qint64 id, const QString &operation, const QList<PropertyValue> &args)
{
    return writeFrame(3, [&](QCborStreamWriter &out) {
        out.append(kId);
        out.append(id);
        out.append(kOperation);
        out.append(operation);
        out.append(kArgs);
        out.startArray(quint64(args.size()));
        for (const PropertyValue &arg : args)
            writeValue(out, arg, 0);
        out.endArray();
    });
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

QByteArray replyFrame(qint64 id, const PropertyValue &result)
{
    return writeFrame(2, [&](QCborStreamWriter &out) {
        out.append(kReplyTo);
        out.append(id);
        out.append(kResult);
        writeValue(out, result, 0);
    });
}

QByteArray errorReplyFrame(qint64 id, const QString &message)
{
    return writeFrame(2, [&](QCborStreamWriter &out) {
        out.append(kReplyTo);
        out.append(id);
        out.append(kError);
        out.append(message);
    });
}

QByteArray messageFrame(qint32 callbackId, const BagPtr &bag)
{
    return writeFrame(2, [&](QCborStreamWriter &out) {
        out.append(kMessage);
        out.append(qint64(callbackId));
        out.append(kBag);
        writeValue(out, bag, 0);
    });
}

} // namespace quillon::WireCodec
