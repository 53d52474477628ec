#include "EngineError.h"
#include "FrameReader.h"

#include <QTest>
#include <QtEndian>

using namespace quillon;

namespace {
QByteArray framed(const QByteArray &payload)
{
    QByteArray header(4, Qt::Uninitialized);
    qToBigEndian(quint32(payload.size()), header.data());
    return header + payload;
}
} // namespace

class tst_FrameReader : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void framesSurviveAnySplit();
    void manySmallFramesInOneRead();
    void oversizedLengthBreaksTheStream();
};

void tst_FrameReader::framesSurviveAnySplit()
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
}

void tst_FrameReader::manySmallFramesInOneRead()
{
    QByteArray stream;
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
}

void tst_FrameReader::oversizedLengthBreaksTheStream()
{
    FrameReader limited(16);
    limited.append(framed(QByteArray(16, 'a')));
    QCOMPARE(limited.next().value_or(QByteArray()).size(), 16);
    limited.append(framed(QByteArray(17, 'b')));
    QVERIFY_THROWS_EXCEPTION(EngineError, (void)limited.next());
    // Nothing after a bad length can be trusted, not even a good frame.
    limited.append(framed("ok"));
    QVERIFY_THROWS_EXCEPTION(EngineError, (void)limited.next());

    FrameReader reader;
    reader.append(QByteArray("\xff\xff\xff\xff", 4));
    QVERIFY_THROWS_EXCEPTION(EngineError, (void)reader.next());
}

QTEST_GUILESS_MAIN(tst_FrameReader)
#include "tst_FrameReader.moc"
