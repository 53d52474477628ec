#include "EngineError.h"
#include "FrameReader.h"
#include "WireCodec.h"

#include <QCborArray>
#include <QRandomGenerator>
#include <QTest>
#include <QtEndian>

#include <limits>

using namespace quillon;

namespace {

QByteArray framed(const QByteArray &payload)
{
    QByteArray header(4, Qt::Uninitialized);
    qToBigEndian(quint32(payload.size()), header.data());
    return header + payload;
}

PropertyValue randomValue(QRandomGenerator &random, int depth)
{
    const int kind = int(random.bounded(depth > 3 ? 3 : 5));
    switch (kind) {
    case 0:
        return {};
    case 1: {
        QString text;
        for (int i = int(random.bounded(12)); i > 0; --i)
            text.append(QChar(char16_t(random.bounded(0x20, 0x3000))));
        return text;
    }
    case 2:
        return qint32(random.generate());
    case 3: {
        auto bag = PropertyBag::create();
        for (int i = int(random.bounded(6)); i > 0; --i)
            bag->set(QStringLiteral("n%1").arg(random.bounded(1000)), randomValue(random, depth + 1));
        return bag;
    }
    default: {
        auto list = PropertyList::create();
        for (int i = int(random.bounded(6)); i > 0; --i)
            list->append(randomValue(random, depth + 1));
        return list;
    }
    }
}

PropertyValue throughTheWire(const PropertyValue &value)
{
    const QByteArray bytes = WireCodec::replyFrame(7, value);
    FrameReader reader;
    reader.append(bytes);
    const auto payload = reader.next();
    if (!payload)
        throw EngineError("frame not complete");
    return WireCodec::decode(WireCodec::parsePayload(*payload).value(WireCodec::kResult));
}

} // namespace

class tst_WireCodec : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void valuesSurviveTheWire();
    void decodeRejectsWhatIsNotAValue_data();
    void decodeRejectsWhatIsNotAValue();
    void payloadsAndRequestsAreChecked();
    void garbageNeverCrashes();
    void largeAndHostileFramesStayBounded();
    void framesSurviveAnySplitAndBadLengthsBreakTheStream();
};

void tst_WireCodec::valuesSurviveTheWire()
{
    QRandomGenerator random(20240611);
    for (int i = 0; i < 500; ++i) {
        const PropertyValue value = randomValue(random, 0);
        const PropertyValue back = throughTheWire(value);
        QVERIFY2(sameValue(value, back), qPrintable(QStringLiteral("value %1 changed").arg(i)));
        // Byte-equal re-encoding also proves that the order of names was kept.
        QCOMPARE(WireCodec::replyFrame(7, back), WireCodec::replyFrame(7, value));
    }
    for (qint32 n : {std::numeric_limits<qint32>::min(), std::numeric_limits<qint32>::max(), kMissing, 0})
        QCOMPARE(std::get<qint32>(throughTheWire(n)), n);
    QVERIFY(std::holds_alternative<std::monostate>(throughTheWire({})));
    QCOMPARE(std::get<QString>(throughTheWire(QString())), QString());

    // A bag inside itself fails cleanly.
    auto bag = PropertyBag::create();
    bag->set("self", bag);
    QVERIFY_THROWS_EXCEPTION(EngineError, (void)WireCodec::replyFrame(1, bag));
    bag->remove("self");
}

void tst_WireCodec::decodeRejectsWhatIsNotAValue_data()
{
    QTest::addColumn<QCborValue>("value");
    QTest::newRow("above 32 bits") << QCborValue(qint64(std::numeric_limits<qint32>::max()) + 1);
    QTest::newRow("below 32 bits") << QCborValue(qint64(std::numeric_limits<qint32>::min()) - 1);
    QTest::newRow("boolean") << QCborValue(true);
    QTest::newRow("double") << QCborValue(1.5);
    QTest::newRow("bytes") << QCborValue(QByteArray("abc"));
    QTest::newRow("undefined") << QCborValue();
    QTest::newRow("tagged") << QCborValue(QCborKnownTags::Base64, QCborValue("x"));
    QTest::newRow("number as name") << QCborValue(QCborMap{{1, "x"}});
    QTest::newRow("bad integer in a list") << QCborValue(QCborArray{1, qint64(1) << 40});
    QCborValue deep = QCborArray();
    for (int i = 0; i < WireCodec::kMaxDepth + 2; ++i)
        deep = QCborArray{deep};
    QTest::newRow("too deep") << deep;
}

void tst_WireCodec::decodeRejectsWhatIsNotAValue()
{
    QFETCH(QCborValue, value);
    QVERIFY_THROWS_EXCEPTION(EngineError, (void)WireCodec::decode(value));
}

void tst_WireCodec::payloadsAndRequestsAreChecked()
{
    const QByteArray good = QCborValue(QCborMap{{"k", 1}}).toCbor();
    const QList<QByteArray> bad = {QByteArray(), good.left(good.size() - 1), good + good,
                                   QCborValue(QCborArray{1}).toCbor(), QByteArray("\xff\xff\xff", 3)};
    QCOMPARE(WireCodec::parsePayload(good).value("k").toInteger(), 1);
    for (const QByteArray &payload : bad)
        QVERIFY_THROWS_EXCEPTION(EngineError, (void)WireCodec::parsePayload(payload));

    // A request needs its id, operation and arguments.
    const QCborMap full = WireCodec::parsePayload(
        WireCodec::requestFrame(5, "GetItemBag", {"NEWS", 12, 0}).mid(WireCodec::kHeaderBytes));
    const WireRequest request = WireCodec::readRequest(full);
    QCOMPARE(request.id, 5);
    QCOMPARE(request.operation, "GetItemBag");
    QCOMPARE(request.args.size(), 3);
    QCOMPARE(std::get<qint32>(request.args.at(1)), 12);
    for (const QString &key : {WireCodec::kId, WireCodec::kOperation, WireCodec::kArgs}) {
        QCborMap partial = full;
        partial.remove(key);
        QVERIFY_THROWS_EXCEPTION(EngineError, (void)WireCodec::readRequest(partial));
    }
}

void tst_WireCodec::garbageNeverCrashes()
{
    QRandomGenerator random(99);
    const QByteArray valid = WireCodec::requestFrame(3, "Log", {"t", 2}).mid(WireCodec::kHeaderBytes);
    int rejected = 0;
    for (int i = 0; i < 3000; ++i) {
        QByteArray payload = valid;
        // Flip a few bytes of a real request, or make one up from scratch.
        if (i % 2 == 0) {
            for (int flips = int(random.bounded(1, 4)); flips > 0; --flips)
                payload[int(random.bounded(int(payload.size())))] = char(random.generate());
        } else {
            payload.resize(int(random.bounded(1, 40)));
            for (char &c : payload)
                c = char(random.generate());
        }
        try {
            [[maybe_unused]] const WireRequest request =
                WireCodec::readRequest(WireCodec::parsePayload(payload));
        } catch (const EngineError &) {
            ++rejected;
        }
    }
    QVERIFY(rejected > 1500);
}

void tst_WireCodec::largeAndHostileFramesStayBounded()
{
    // Many names: each is found under any case, the last as quickly as the first.
    auto bag = PropertyBag::create();
    for (int i = 0; i < 40000; ++i)
        bag->setLong(QStringLiteral("Key%1").arg(i), i);
    const auto decoded = std::get<BagPtr>(throughTheWire(bag));
    QCOMPARE(decoded->size(), 40000);
    QCOMPARE(decoded->number("KEY39999"), 39999);
    QCOMPARE(decoded->names().at(17), "Key17");
    decoded->setLong("key17", -1);
    QVERIFY(decoded->remove("KEY5"));
    QCOMPARE(decoded->number("Key17"), -1);
    QCOMPARE(decoded->number("Key39998"), 39998);
    QCOMPARE(decoded->size(), 39999);

    // Counted before anything is built: a frame of empty lists, or one nested too deep.
    QCborArray empties;
    for (int i = 0; i < 1000; ++i)
        empties.append(QCborArray());
    const QByteArray wide = QCborValue(QCborMap{{WireCodec::kArgs, empties}}).toCbor();
    QCOMPARE(WireCodec::parsePayload(wide, 1003).size(), 1);
    QVERIFY_THROWS_EXCEPTION(EngineError, (void)WireCodec::parsePayload(wide, 1002));
    const auto nested = [](int levels) {
        QByteArray deep(1, char(0xa1)); // a map of one pair...
        return deep + QByteArray(1, char(0x61)) + 'k' + QByteArray(levels, char(0x81)) + char(0x00);
    };
    QVERIFY_THROWS_EXCEPTION(EngineError, (void)WireCodec::parsePayload(nested(WireCodec::kMaxDepth + 10)));
    QVERIFY_THROWS_EXCEPTION(EngineError,
                             (void)WireCodec::parsePayload(nested(100), 1000, WireCodec::kMaxRequestDepth));
}

void tst_WireCodec::framesSurviveAnySplitAndBadLengthsBreakTheStream()
{
    const QList<QByteArray> payloads = {QByteArray("first"), QByteArray(), QByteArray(300, 'x'),
                                        QByteArray("\0\1", 2)};
    QByteArray stream;
    for (const QByteArray &payload : payloads)
        stream += framed(payload);
    for (int chunk = 1; chunk <= stream.size(); chunk += (chunk < 8 ? 1 : 37)) {
        FrameReader reader;
        QList<QByteArray> received;
        for (qsizetype at = 0; at < stream.size(); at += chunk) {
            reader.append(stream.mid(at, chunk));
            while (const auto payload = reader.next())
                received.append(*payload);
        }
        QCOMPARE(received, payloads);
        QCOMPARE(reader.bufferedBytes(), 0);
    }

    // Many small frames in one read, more than the reader keeps before it drops what was read.
    stream.clear();
    for (int i = 0; i < 50000; ++i)
        stream += framed(QByteArray::number(i));
    stream += framed("tail").left(6);
    FrameReader reader;
    reader.append(stream);
    int count = 0;
    while (const auto payload = reader.next()) {
        QCOMPARE(*payload, QByteArray::number(count));
        ++count;
    }
    QCOMPARE(count, 50000);
    QCOMPARE(reader.bufferedBytes(), 6);
    reader.append("il");
    QCOMPARE(reader.next().value_or(QByteArray()), QByteArray("tail"));

    FrameReader limited(16);
    limited.append(framed(QByteArray(16, 'a')));
    QCOMPARE(limited.next().value_or(QByteArray()).size(), 16);
    limited.append(framed(QByteArray(17, 'b')));
    QVERIFY_THROWS_EXCEPTION(EngineError, (void)limited.next());
    // Nothing after a bad length can be trusted, not even a good frame.
    limited.append(framed("ok"));
    QVERIFY_THROWS_EXCEPTION(EngineError, (void)limited.next());

    FrameReader huge;
    huge.append(QByteArray("\xff\xff\xff\xff", 4));
    QVERIFY_THROWS_EXCEPTION(EngineError, (void)huge.next());
}

QTEST_GUILESS_MAIN(tst_WireCodec)
#include "tst_WireCodec.moc"
