#include "DaemonProcess.h"
#include "FrameReader.h"
#include "LinkedSubscribeClient.h"
#include "SocketLink.h"

#include <QCborArray>
#include <QDeadlineTimer>
#include <QLocalSocket>
#include <QTest>
#include <QtEndian>

using namespace quillon;

namespace {

// Frames built by hand, so that the test pins the format rather than the codec.
QByteArray framed(const QByteArray &payload)
{
    QByteArray header(4, Qt::Uninitialized);
    qToBigEndian(quint32(payload.size()), header.data());
    return header + payload;
}

QByteArray requestFrame(qint64 id, const QString &operation, const QCborArray &args)
{
    const QCborMap request{
        {QStringLiteral("id"), id}, {QStringLiteral("op"), operation}, {QStringLiteral("args"), args}};
    return framed(QCborValue(request).toCbor());
}

// The next frame from a raw connection, or an empty map after 5 s.
QCborMap readFrame(QLocalSocket &socket, FrameReader &reader)
{
    const QDeadlineTimer deadline(5000);
    for (;;) {
        if (const auto payload = reader.next())
            return QCborValue::fromCbor(*payload).toMap();
        if (deadline.hasExpired() || !socket.waitForReadyRead(int(qMax<qint64>(1, deadline.remainingTime()))))
            return {};
        reader.append(socket.readAll());
    }
}

bool isClosedAfter(const QString &socketName, const QByteArray &bytes)
{
    QLocalSocket raw;
    raw.connectToServer(socketName);
    if (!raw.waitForConnected(2000))
        return false;
    raw.write(bytes);
    raw.flush();
    return raw.state() == QLocalSocket::UnconnectedState || raw.waitForDisconnected(5000);
}

} // namespace

class tst_EngineServer : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void speaksTheWireFormat();
    void unreadableFramesCloseOnlyTheirConnection();
    void refusesASecondDaemonAndReplacesADeadOne();
};

void tst_EngineServer::speaksTheWireFormat()
{
    DaemonProcess daemon;
    QVERIFY2(daemon.start(), qPrintable(daemon.errorText()));
    QLocalSocket listener;
    QLocalSocket adder;
    FrameReader listenerFrames;
    FrameReader adderFrames;
    listener.connectToServer(daemon.socketName());
    adder.connectToServer(daemon.socketName());
    QVERIFY(listener.waitForConnected(2000) && adder.waitForConnected(2000));

    const QCborMap search{{QStringLiteral("guid"), QStringLiteral("g")},
                          {QStringLiteral("keywords"), QStringLiteral("k")}};
    listener.write(requestFrame(1, QStringLiteral("BagToText"), {search}));
    QCborMap reply = readFrame(listener, listenerFrames);
    QCOMPARE(reply.value(QStringLiteral("re")).toInteger(), 1);
    QVERIFY(reply.value(QStringLiteral("ok")).toString().startsWith(QStringLiteral("search")));

    listener.write(requestFrame(2, QStringLiteral("NoSuchOperation"), {}));
    reply = readFrame(listener, listenerFrames);
    QCOMPARE(reply.value(QStringLiteral("re")).toInteger(), 2);
    QVERIFY(!reply.value(QStringLiteral("error")).toString().isEmpty());
    QVERIFY(!reply.contains(QStringLiteral("ok")));

    listener.write(requestFrame(3, QStringLiteral("Connect"), {QStringLiteral("CONFIGCONSUMER"), 41}));
    QVERIFY(readFrame(listener, listenerFrames).value(QStringLiteral("ok")).isNull());

    const QCborMap add{{QStringLiteral("REQUEST"), QStringLiteral("ADD")},
                       {QStringLiteral("CLASS"), QStringLiteral("NEWS")},
                       {QStringLiteral("TITLE"), QStringLiteral("Wire")},
                       {QStringLiteral("URL"), QStringLiteral("http://127.0.0.1:9/wire")}};
    adder.write(requestFrame(1, QStringLiteral("SubmitRequest"), {add, 0}));
    QCOMPARE(readFrame(adder, adderFrames).value(QStringLiteral("re")).toInteger(), 1);
    const QCborMap message = readFrame(listener, listenerFrames);
    QCOMPARE(message.value(QStringLiteral("msg")).toInteger(), 41);
    const QCborMap bag = message.value(QStringLiteral("bag")).toMap();
    QCOMPARE(bag.value(QStringLiteral("MESSAGE")).toString(), QStringLiteral("SubscriptionAdded"));
    QCOMPARE(bag.value(QStringLiteral("Result")).toMap().value(QStringLiteral("TITLE")).toString(),
             QStringLiteral("Wire"));
}

void tst_EngineServer::unreadableFramesCloseOnlyTheirConnection()
{
    DaemonProcess daemon;
    QVERIFY2(daemon.start(), qPrintable(daemon.errorText()));
    auto client = daemon.newClient();
    client->Connect(QStringLiteral("CONFIGCONSUMER"), nullptr);

    QVERIFY(isClosedAfter(daemon.socketName(), framed("\xff\x00garbage")));
    QVERIFY(isClosedAfter(daemon.socketName(), QByteArray("\x7f\xff\xff\xff", 4)));
    const QCborMap noOperation{{QStringLiteral("id"), 1}, {QStringLiteral("args"), QCborArray()}};
    QVERIFY(isClosedAfter(daemon.socketName(), framed(QCborValue(noOperation).toCbor())));

    client->Log(QStringLiteral("still here"), 1);
    const Handle items = client->ListConsumerItems(QStringLiteral("*"), QStringLiteral("NEWS"));
    client->ReleaseHandle(items);
    QCOMPARE(daemon.stop(), 0);
}

void tst_EngineServer::refusesASecondDaemonAndReplacesADeadOne()
{
    DaemonProcess first;
    QVERIFY2(first.start(), qPrintable(first.errorText()));

    DaemonProcess second(first.socketName());
    second.process().setProcessChannelMode(QProcess::MergedChannels);
    QVERIFY(!second.start());
    QCOMPARE(second.process().exitCode(), 3);
    QVERIFY2(second.errorText().contains(QStringLiteral("already")), qPrintable(second.errorText()));

    auto link = SocketLink::open(first.socketName());
    SocketLink *rawLink = link.get();
    auto client = LinkedSubscribeClient::create(std::move(link));
    client->Log(QStringLiteral("first still serves"), 1);

    // A daemon that dies leaves its socket file and lock behind; idle clients notice quietly.
    first.process().kill();
    QVERIFY(first.process().waitForFinished(5000));
    QTRY_VERIFY(!rawLink->isConnected());
    QVERIFY_THROWS_EXCEPTION(EngineError, client->Log(QStringLiteral("gone"), 1));

    DaemonProcess third(first.socketName());
    QVERIFY2(third.start(), qPrintable(third.errorText()));
    auto again = third.newClient();
    again->Log(QStringLiteral("third serves"), 1);
    QCOMPARE(third.stop(), 0);
}

QTEST_GUILESS_MAIN(tst_EngineServer)
#include "tst_EngineServer.moc"
