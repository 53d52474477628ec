#include "EngineServer.h"

#include "EngineConnection.h"

#include <QDir>
#include <QFileInfo>
#include <QLocalSocket>
#include <QLockFile>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcServer, "corvell.quillon.daemon.server")

namespace quillon {

namespace {
constexpr int kProbeTimeoutMs = 1000;

// Beside the socket file, so two daemons for one name cannot both get past the check below.
QString lockPathFor(const QString &socketName)
{
    if (QFileInfo(socketName).isAbsolute())
        return socketName + QStringLiteral(".lock");
    return QDir(QDir::tempPath()).filePath(socketName + QStringLiteral(".lock"));
}

void setError(QString *error, const QString &text)
{
    if (error)
        *error = text;
}
} // namespace

EngineServer::EngineServer(EngineCore *core, QObject *parent) : QObject(parent), m_core(core)
{
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, &EngineServer::acceptConnections);
}

EngineServer::~EngineServer()
{
    // Connections close their engine sessions while the core is still there.
    qDeleteAll(findChildren<EngineConnection *>(Qt::FindDirectChildrenOnly));
}

EngineServer::StartResult EngineServer::listen(const QString &socketName, QString *error)
{
    auto lock = std::make_unique<QLockFile>(lockPathFor(socketName));
    // A running daemon's lock never goes stale by age; a dead one's is taken over.
    lock->setStaleLockTime(0);
    if (!lock->tryLock(0)) {
        if (lock->error() == QLockFile::LockFailedError) {
            setError(error, QStringLiteral("another engine is already running on \"%1\"").arg(socketName));
            return StartResult::AlreadyRunning;
        }
        setError(error, QStringLiteral("cannot create the lock file %1").arg(lockPathFor(socketName)));
        return StartResult::Failed;
    }
    if (someoneAnswers(socketName)) {
        setError(error, QStringLiteral("another engine already answers on \"%1\"").arg(socketName));
        return StartResult::AlreadyRunning;
    }
    // Nobody answers: what is left under the name belongs to a daemon that died.
    QLocalServer::removeServer(socketName);
    if (!m_server.listen(socketName)) {
        setError(error,
                 QStringLiteral("cannot listen on \"%1\": %2").arg(socketName, m_server.errorString()));
        return StartResult::Failed;
    }
    m_lock = std::move(lock);
    qCInfo(lcServer) << "listening on" << m_server.fullServerName();
    return StartResult::Listening;
}

bool EngineServer::someoneAnswers(const QString &socketName)
{
    QLocalSocket probe;
    probe.connectToServer(socketName);
    const bool answers = probe.waitForConnected(kProbeTimeoutMs);
    probe.abort();
    return answers;
}

int EngineServer::connectionCount() const
{
    return int(findChildren<EngineConnection *>(Qt::FindDirectChildrenOnly).size());
}

void EngineServer::acceptConnections()
{
    while (QLocalSocket *socket = m_server.nextPendingConnection()) {
        if (!m_core) {
            socket->abort();
            socket->deleteLater();
            continue;
        }
        new EngineConnection(socket, m_core, this);
    }
}

void EngineServer::shutdown(int flushTimeoutMs)
{
    m_server.close();
    if (m_core)
        m_core->announceTermination();
    for (EngineConnection *connection : findChildren<EngineConnection *>(Qt::FindDirectChildrenOnly))
        connection->finish(flushTimeoutMs);
    qCInfo(lcServer) << "stopped";
}

} // namespace quillon
