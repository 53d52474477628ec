#pragma once

#include "EngineCore.h"

#include <QLocalServer>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <memory>

class QLockFile;

namespace quillon {

// The daemon's listening end: a local socket in the user's private folder, one engine session
// per client connection. Only processes of this user are served, and at most maxConnections at
// once; a listener that fails is opened again.
class EngineServer : public QObject
{
    Q_OBJECT
public:
    enum class StartResult { Listening, AlreadyRunning, Failed };

    explicit EngineServer(EngineCore *core, QObject *parent = nullptr);
    // Connections beyond the limit are closed at once with a log line (default 1000, or
    // QUILLON_ENGINE_MAX_CONNECTIONS), never more than the open-file limit leaves room for.
    void setMaxConnections(int limit);
    [[nodiscard]] int maxConnections() const { return m_maxConnections; }
    ~EngineServer() override;

    // Takes the name over from a daemon that died, never from one that still answers.
    [[nodiscard]] StartResult listen(const QString &socketName, QString *error = nullptr);
    // Serves on a listening socket a service manager opened (socket activation); the manager
    // keeps it, and its name stays when the engine ends.
    [[nodiscard]] StartResult adopt(qintptr descriptor, QString *error = nullptr);
    [[nodiscard]] QString fullServerName() const { return m_socketPath; }
    [[nodiscard]] int connectionCount() const;

    // Tells every consumer that the engine stops, writes out what is pending and closes.
    void shutdown(int flushTimeoutMs = 2000);

private:
    class Listener;

    void acceptConnections();
    [[nodiscard]] bool admit(quintptr descriptor);
    void listenAgainIfClosed();
    [[nodiscard]] static bool someoneAnswers(const QString &socketName, bool *foreign);
    [[nodiscard]] static std::unique_ptr<QLockFile> lockFor(const QString &path, QString *error,
                                                            StartResult *result);
    void closeListener();

    QPointer<EngineCore> m_core;
    std::unique_ptr<Listener> m_server;
    std::unique_ptr<QLockFile> m_lock;
    QString m_socketPath;
    QTimer m_watchdog;
    int m_maxConnections = 1000;
    int m_connections = 0;
    bool m_refusing = false;
    bool m_adopted = false;
};

} // namespace quillon
