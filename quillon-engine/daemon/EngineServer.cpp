#include "EngineServer.h"

#include "EngineConnection.h"
#include "EngineSocketName.h"
#include "PeerCredentials.h"
#include "PrivateFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocalSocket>
#include <QLockFile>
#include <QLoggingCategory>

#ifdef Q_OS_UNIX
#include <sys/resource.h>
#include <unistd.h>
#endif

#include <algorithm>

Q_LOGGING_CATEGORY(lcServer, "corvell.quillon.daemon.server")

namespace quillon {

namespace {
constexpr int kProbeTimeoutMs = 1000;
constexpr int kWatchdogMs = 1000;
// Handles the daemon needs besides its connections: database, log, fetches.
constexpr int kReservedHandles = 64;

void setError(QString *error, const QString &text)
{
    if (error)
        *error = text;
}

// Room for connections under the open-file limit, raised to the hard limit first.
int handleRoom()
{
#ifdef Q_OS_UNIX
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return 1024 - kReservedHandles;
    if (limit.rlim_cur < limit.rlim_max) {
        limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 65536);
        ::setrlimit(RLIMIT_NOFILE, &limit);
        ::getrlimit(RLIMIT_NOFILE, &limit);
    }
    return int(std::min<rlim_t>(limit.rlim_cur, 65536)) - kReservedHandles;
#else
    return 65536;
#endif
}
} // namespace

// Looks at each connection before Qt wraps it: strangers and connections over the limit are
// closed on the spot, so they never cost the engine more than a moment.
class EngineServer::Listener : public QLocalServer
{
public:
    explicit Listener(EngineServer *owner) : m_owner(owner) {}

protected:
    void incomingConnection(quintptr descriptor) override
    {
        if (m_owner->admit(descriptor)) {
            QLocalServer::incomingConnection(descriptor);
            return;
        }
#ifdef Q_OS_UNIX
        ::close(int(descriptor));
#else
        // Wrapped only to be closed, so that the pipe handle is released.
        QLocalSocket refused;
        refused.setSocketDescriptor(qintptr(descriptor));
        refused.abort();
#endif
    }

private:
    EngineServer *m_owner;
};

EngineServer::EngineServer(EngineCore *core, QObject *parent)
    : QObject(parent), m_core(core), m_server(std::make_unique<Listener>(this))
{
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    connect(m_server.get(), &QLocalServer::newConnection, this, &EngineServer::acceptConnections);
    bool ok = false;
    const int configured = qEnvironmentVariableIntValue("QUILLON_ENGINE_MAX_CONNECTIONS", &ok);
    setMaxConnections(ok && configured > 0 ? configured : 1000);
    // Qt closes a listener for good after one failed accept (out of handles, a client gone
    // before it was taken); the engine must not stay alive and deaf.
    m_watchdog.setInterval(kWatchdogMs);
    connect(&m_watchdog, &QTimer::timeout, this, &EngineServer::listenAgainIfClosed);
}

EngineServer::~EngineServer()
{
    m_watchdog.stop();
    closeListener();
    // Connections close their engine sessions while the core is still there.
    qDeleteAll(findChildren<EngineConnection *>(Qt::FindDirectChildrenOnly));
}

void EngineServer::setMaxConnections(int limit)
{
    m_maxConnections = std::max(1, std::min(limit, handleRoom()));
}

EngineServer::StartResult EngineServer::listen(const QString &socketName, QString *error)
{
    const QString path = EngineSocketPath(socketName);
    const QString lockPath = path + QStringLiteral(".lock");
    for (const QString &file : {path, lockPath}) {
        if (QFileInfo::exists(file) && !PrivateFiles::ownedByMe(file)) {
            setError(error, QStringLiteral("%1 belongs to another user; not trusted").arg(file));
            return StartResult::Failed;
        }
    }
    StartResult refused = StartResult::Failed;
    auto lock = lockFor(path, error, &refused);
    if (!lock)
        return refused;
    bool foreign = false;
    if (someoneAnswers(path, &foreign)) {
        if (foreign) {
            setError(error, QStringLiteral("another user's program listens on \"%1\"").arg(path));
            return StartResult::Failed;
        }
        setError(error, QStringLiteral("another engine already answers on \"%1\"").arg(path));
        return StartResult::AlreadyRunning;
    }
    // Nobody answers: what is left under the name belongs to a daemon that died.
    QLocalServer::removeServer(path);
    if (!m_server->listen(path)) {
        setError(error, QStringLiteral("cannot listen on \"%1\": %2").arg(path, m_server->errorString()));
        return StartResult::Failed;
    }
    m_lock = std::move(lock);
    m_socketPath = path;
    m_watchdog.start();
    qCInfo(lcServer) << "listening on" << path << "for at most" << m_maxConnections << "connections";
    return StartResult::Listening;
}

EngineServer::StartResult EngineServer::adopt(qintptr descriptor, QString *error)
{
    if (!m_server->listen(descriptor)) {
        setError(error, QStringLiteral("cannot serve on the passed socket: %1").arg(m_server->errorString()));
        return StartResult::Failed;
    }
    m_adopted = true;
    const QString path = m_server->fullServerName();
    // One engine per name, however it was started.
    StartResult refused = StartResult::Failed;
    m_lock = lockFor(path, error, &refused);
    if (!m_lock) {
        closeListener();
        return refused;
    }
    m_socketPath = path;
    m_watchdog.start();
    qCInfo(lcServer) << "serving the passed socket" << path << "for at most" << m_maxConnections
                     << "connections";
    return StartResult::Listening;
}

std::unique_ptr<QLockFile> EngineServer::lockFor(const QString &path, QString *error, StartResult *result)
{
    const QString lockPath = path + QStringLiteral(".lock");
    auto lock = std::make_unique<QLockFile>(lockPath);
    // A running daemon's lock never goes stale by age; a dead one's is taken over.
    lock->setStaleLockTime(0);
    if (lock->tryLock(0))
        return lock;
    if (lock->error() == QLockFile::LockFailedError) {
        setError(error, QStringLiteral("another engine is already running on \"%1\"").arg(path));
        *result = StartResult::AlreadyRunning;
    } else {
        setError(error, QStringLiteral("cannot create the lock file %1").arg(lockPath));
        *result = StartResult::Failed;
    }
    return nullptr;
}

// Qt removes a socket's file when it closes it. A passed socket belongs to the service manager,
// which goes on listening and starts the next engine on it: a second link keeps its name.
void EngineServer::closeListener()
{
#ifdef Q_OS_UNIX
    if (m_adopted && m_server->isListening()) {
        const QByteArray path = QFile::encodeName(m_server->fullServerName());
        const QByteArray keep = path + ".keep";
        ::unlink(keep.constData());
        const bool kept = ::link(path.constData(), keep.constData()) == 0;
        m_server->close();
        if (kept && ::rename(keep.constData(), path.constData()) != 0)
            qCWarning(lcServer) << "the socket's name" << path << "is lost:" << qt_error_string();
        return;
    }
#endif
    m_server->close();
}

bool EngineServer::someoneAnswers(const QString &socketName, bool *foreign)
{
    QLocalSocket probe;
    probe.connectToServer(socketName);
    const bool answers = probe.waitForConnected(kProbeTimeoutMs);
    *foreign = answers && !peerIsThisUser(probe.socketDescriptor());
    probe.abort();
    return answers;
}

void EngineServer::listenAgainIfClosed()
{
    if (m_server->isListening() || m_socketPath.isEmpty())
        return;
    qCWarning(lcServer) << "the listener closed:" << m_server->errorString() << "- listening again";
    QLocalServer::removeServer(m_socketPath);
    if (!m_server->listen(m_socketPath))
        qCWarning(lcServer) << "cannot listen again yet:" << m_server->errorString();
}

int EngineServer::connectionCount() const
{
    return m_connections;
}

bool EngineServer::admit(quintptr descriptor)
{
    if (!peerIsThisUser(qintptr(descriptor))) {
        qCWarning(lcServer) << "refused a connection from another user";
        return false;
    }
    if (m_connections >= m_maxConnections) {
        // One line per burst: a flood must not flood the log too.
        if (!std::exchange(m_refusing, true))
            qCWarning(lcServer) << "connection limit of" << m_maxConnections
                                << "reached; refusing new clients";
        return false;
    }
    if (std::exchange(m_refusing, false))
        qCInfo(lcServer) << "accepting clients again";
    ++m_connections;
    return true;
}

void EngineServer::acceptConnections()
{
    while (QLocalSocket *socket = m_server->nextPendingConnection()) {
        if (!m_core) {
            --m_connections;
            socket->abort();
            socket->deleteLater();
            continue;
        }
        auto *connection = new EngineConnection(socket, m_core, this);
        connect(connection, &QObject::destroyed, this, [this]() { --m_connections; });
    }
}

void EngineServer::shutdown(int flushTimeoutMs)
{
    m_watchdog.stop();
    m_socketPath.clear();
    closeListener();
    if (m_core)
        m_core->announceTermination();
    for (EngineConnection *connection : findChildren<EngineConnection *>(Qt::FindDirectChildrenOnly))
        connection->finish(flushTimeoutMs);
    qCInfo(lcServer) << "stopped";
}

} // namespace quillon
