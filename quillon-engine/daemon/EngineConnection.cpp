#include "EngineConnection.h"

#include "EngineMessages.h"
#include "WireCodec.h"

#include <QCoreApplication>
#include <QLocalSocket>
#include <QLoggingCategory>
#include <QTimer>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

Q_LOGGING_CATEGORY(lcConnection, "corvell.quillon.daemon.connection")

namespace quillon {

namespace {
// Gives the memory of a burst (a large frame, many clients) back to the system once things
// are quiet again, instead of keeping the peak for the rest of the engine's life.
void returnMemoryLater()
{
#if defined(__GLIBC__)
    static QTimer *timer = nullptr;
    if (!timer) {
        timer = new QTimer(QCoreApplication::instance());
        timer->setSingleShot(true);
        timer->setInterval(500);
        QObject::connect(timer, &QTimer::timeout, []() { ::malloc_trim(0); });
    }
    timer->start();
#endif
}

constexpr qsizetype kLargeFrame = 1024 * 1024;
} // namespace

EngineConnection::EngineConnection(QLocalSocket *socket, EngineCore *core, QObject *parent)
    : QObject(parent), m_socket(socket), m_core(core)
{
    m_socket->setParent(this);
    QPointer<EngineConnection> self(this);
    m_session = core->openSession([self](qint32 callbackId, const BagPtr &message) {
        if (self)
            self->sendMessage(callbackId, message);
    });
    connect(m_socket, &QLocalSocket::readyRead, this, &EngineConnection::readRequests);
    connect(m_socket, &QLocalSocket::disconnected, this, [this]() {
        closeSession();
        deleteLater();
        returnMemoryLater();
    });
    qCDebug(lcConnection) << "session" << m_session << "opened";
}

EngineConnection::~EngineConnection()
{
    disconnect(m_socket, nullptr, this, nullptr);
    closeSession();
}

void EngineConnection::finish(int timeoutMs)
{
    if (m_socket->state() != QLocalSocket::ConnectedState)
        return;
    m_socket->flush();
    while (m_socket->bytesToWrite() > 0 && m_socket->waitForBytesWritten(timeoutMs)) {
    }
    m_socket->disconnectFromServer();
}

void EngineConnection::readRequests()
{
    if (m_dropping) {
        m_socket->readAll();
        return;
    }
    m_reader.append(m_socket->readAll());
    try {
        while (const auto payload = m_reader.next()) {
            if (payload->size() > kLargeFrame)
                returnMemoryLater();
            answer(WireCodec::parsePayload(*payload, kMaxRequestValues, WireCodec::kMaxRequestDepth));
            if (m_dropping)
                return;
        }
    } catch (const EngineError &e) {
        // The stream cannot be trusted after a bad frame; other clients are not affected.
        qCWarning(lcConnection) << "session" << m_session
                                << "sent an unreadable frame, closing:" << e.message();
        closeSession();
        m_socket->abort();
    }
}

void EngineConnection::answer(const QCborMap &frame)
{
    const WireRequest request = WireCodec::readRequest(frame);
    QByteArray reply;
    try {
        if (!m_core)
            throw EngineError(QStringLiteral("The engine has stopped"));
        reply = WireCodec::replyFrame(request.id, m_core->call(m_session, request.operation, request.args));
    } catch (const EngineError &e) {
        reply = WireCodec::errorReplyFrame(request.id, e.message());
    } catch (const std::exception &e) {
        reply = WireCodec::errorReplyFrame(request.id, QString::fromLocal8Bit(e.what()));
    }
    send(reply);
}

// A message the wire cannot carry (too large, too deep) still reaches its callback, as a
// failure that says why: a caller waiting for an answer must never wait for good. Messages
// leave when the loop next turns, all that one turn produced in one write: a round of fetches
// announces two per feed, and a write each woke the client as often.
void EngineConnection::sendMessage(qint32 callbackId, const BagPtr &message)
{
    try {
        send(WireCodec::messageFrame(callbackId, message), Flush::NextTurn);
    } catch (const EngineError &e) {
        qCWarning(lcConnection) << "message for session" << m_session << "not sent:" << e.message();
        const BagPtr failure =
            EngineMessages::failure(QStringLiteral("The answer (%1) could not be sent: %2")
                                        .arg(message->text(QStringLiteral("MESSAGE")), e.message()));
        send(WireCodec::messageFrame(callbackId, failure), Flush::NextTurn);
    }
}

void EngineConnection::send(const QByteArray &bytes, Flush when)
{
    if (m_dropping || m_socket->state() != QLocalSocket::ConnectedState)
        return;
    if (m_socket->bytesToWrite() > kMaxQueuedBytes) {
        drop("does not read what the engine sends");
        return;
    }
    m_socket->write(bytes);
    // A reply is written now: the client is blocked waiting for it.
    if (when == Flush::Now)
        m_socket->flush();
}

// Later, from the event loop: this may run inside the core, while it sends to every session.
void EngineConnection::drop(const char *reason)
{
    if (std::exchange(m_dropping, true))
        return;
    qCWarning(lcConnection) << "session" << m_session << reason << "- dropping it";
    QTimer::singleShot(0, this, [this]() {
        closeSession();
        m_socket->abort();
        deleteLater();
        returnMemoryLater();
    });
}

void EngineConnection::closeSession()
{
    if (m_core && m_session != 0)
        m_core->closeSession(m_session);
    if (m_session != 0)
        qCDebug(lcConnection) << "session" << m_session << "closed";
    m_session = 0;
}

} // namespace quillon
