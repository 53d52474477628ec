#include "SocketLink.h"

#include "EngineError.h"
#include "EngineSocketName.h"
#include "FrameReader.h"
#include "PeerCredentials.h"
#include "WireCodec.h"

#include <QElapsedTimer>
#include <QLocalSocket>
#include <QLoggingCategory>
#include <QMetaObject>

#include <optional>

Q_LOGGING_CATEGORY(lcSocketLink, "corvell.quillon.client.socket")

namespace quillon {

namespace {
// Operations are local and quick; this only keeps a hung engine from freezing its consumers.
constexpr int kReplyTimeoutMs = 60000;

EngineError connectionLost()
{
    return EngineError(QStringLiteral("The engine connection was lost"));
}
} // namespace

struct SocketLink::Private
{
    // Deliveries queued on the context are dropped with it when the link goes.
    QObject context;
    QLocalSocket socket;
    FrameReader reader;
    std::shared_ptr<MessageSink> sink = std::make_shared<MessageSink>();
    std::function<void()> closedSink;
    qint64 lastId = 0;
    qint64 awaitedId = 0;
    std::optional<QCborMap> reply;
    bool inCall = false;
    bool broken = false;

    void readAvailable();
    void route(const QCborMap &frame);
    void post(qint32 callbackId, BagPtr bag);
    void onReadyRead();
    void onDisconnected();
    void send(const QByteArray &bytes);
    void awaitReply(const QString &operation);
};

void SocketLink::Private::readAvailable()
{
    if (broken)
        return;
    reader.append(socket.readAll());
    try {
        while (const auto payload = reader.next())
            route(WireCodec::parsePayload(*payload));
    } catch (const EngineError &e) {
        qCWarning(lcSocketLink) << "unreadable frame from the engine, closing:" << e.message();
        broken = true;
    }
}

void SocketLink::Private::route(const QCborMap &frame)
{
    if (frame.contains(WireCodec::kMessage)) {
        const PropertyValue value = WireCodec::decode(frame.value(WireCodec::kBag));
        const auto *bag = std::get_if<BagPtr>(&value);
        if (!bag || !*bag)
            throw EngineError(QStringLiteral("A message without a bag"));
        post(qint32(frame.value(WireCodec::kMessage).toInteger()), *bag);
    } else if (frame.value(WireCodec::kReplyTo).toInteger(-1) == awaitedId && awaitedId != 0) {
        reply = frame;
    } else {
        qCDebug(lcSocketLink) << "reply nobody waits for dropped"
                              << frame.value(WireCodec::kReplyTo).toInteger();
    }
}

// Always through the event loop, so a callback never runs inside another call on the client.
void SocketLink::Private::post(qint32 callbackId, BagPtr bag)
{
    std::weak_ptr<MessageSink> weakSink = sink;
    QMetaObject::invokeMethod(
        &context,
        [weakSink, callbackId, bag]() {
            const auto current = weakSink.lock();
            // A copy: the sink may replace itself while it runs.
            const MessageSink deliver = current ? *current : MessageSink();
            if (deliver)
                deliver(callbackId, bag);
        },
        Qt::QueuedConnection);
}

void SocketLink::Private::onReadyRead()
{
    readAvailable();
    // Inside a call the waiting loop deals with a broken stream itself.
    if (broken && !inCall)
        socket.abort();
}

void SocketLink::Private::onDisconnected()
{
    readAvailable();
    qCInfo(lcSocketLink) << "engine connection closed";
    // After the messages that came before the end, never inside a call.
    QMetaObject::invokeMethod(
        &context,
        [this]() {
            if (closedSink)
                closedSink();
        },
        Qt::QueuedConnection);
}

void SocketLink::Private::send(const QByteArray &bytes)
{
    socket.write(bytes);
    socket.flush();
    while (socket.bytesToWrite() > 0) {
        if (socket.state() != QLocalSocket::ConnectedState || !socket.waitForBytesWritten(kReplyTimeoutMs))
            throw connectionLost();
    }
}

constexpr qint64 kSpinNs = 300000;

void SocketLink::Private::awaitReply(const QString &operation)
{
    QElapsedTimer elapsed;
    elapsed.start();
    for (;;) {
        readAvailable();
        if (broken) {
            socket.abort();
            throw connectionLost();
        }
        if (reply)
            return;
        if (socket.state() != QLocalSocket::ConnectedState)
            throw connectionLost();
        const qint64 remaining = kReplyTimeoutMs - elapsed.elapsed();
        if (remaining <= 0)
            throw EngineError(QStringLiteral("The engine did not answer %1 in time").arg(operation));
        // The engine usually answers within tens of microseconds: look again briefly before
        // sleeping, since waking a sleeping process costs more than the answer itself.
        if (elapsed.nsecsElapsed() < kSpinNs) {
            socket.waitForReadyRead(0);
            continue;
        }
        socket.waitForReadyRead(int(remaining));
    }
}

SocketLink::SocketLink() : d(std::make_unique<Private>())
{
    QObject::connect(&d->socket, &QLocalSocket::readyRead, &d->context,
                     [p = d.get()]() { p->onReadyRead(); });
    QObject::connect(&d->socket, &QLocalSocket::disconnected, &d->context,
                     [p = d.get()]() { p->onDisconnected(); });
}

SocketLink::~SocketLink()
{
    QObject::disconnect(&d->socket, nullptr, &d->context, nullptr);
    d->socket.abort();
}

std::unique_ptr<SocketLink> SocketLink::open(const QString &socketName, int timeoutMs)
{
    std::unique_ptr<SocketLink> link(new SocketLink());
    const QString path = EngineSocketPath(socketName);
    link->d->socket.connectToServer(path);
    if (!link->d->socket.waitForConnected(timeoutMs)) {
        throw EngineError(QStringLiteral("The engine does not answer on \"%1\": %2")
                              .arg(path, link->d->socket.errorString()));
    }
    // Nothing, a password least of all, goes to a program of another user that took the name.
    if (!peerIsThisUser(link->d->socket.socketDescriptor())) {
        link->d->socket.abort();
        throw EngineError(
            QStringLiteral("\"%1\" is held by another user's program; not connecting").arg(path));
    }
    return link;
}

PropertyValue SocketLink::call(const QString &operation, const QList<PropertyValue> &args)
{
    if (!isConnected())
        throw connectionLost();
    const QByteArray bytes = WireCodec::requestFrame(++d->lastId, operation, args);
    struct CallScope
    {
        Private &p;
        ~CallScope()
        {
            p.inCall = false;
            p.awaitedId = 0;
        }
    } scope{*d};
    d->awaitedId = d->lastId;
    d->reply.reset();
    d->inCall = true;
    d->send(bytes);
    d->awaitReply(operation);
    const QCborMap reply = *std::exchange(d->reply, std::nullopt);
    if (reply.contains(WireCodec::kError))
        throw EngineError(reply.value(WireCodec::kError).toString());
    return WireCodec::decode(reply.value(WireCodec::kResult));
}

void SocketLink::setMessageSink(MessageSink sink)
{
    *d->sink = std::move(sink);
}

void SocketLink::setClosedSink(std::function<void()> sink)
{
    d->closedSink = std::move(sink);
}

bool SocketLink::isConnected() const
{
    return !d->broken && d->socket.state() == QLocalSocket::ConnectedState;
}

} // namespace quillon
