#pragma once

#include "EngineCore.h"

#include <QLocalServer>
#include <QObject>
#include <QPointer>

#include <memory>

class QLockFile;

namespace quillon {

// The daemon's listening end: a local socket only this user can open, one engine session per
// client connection.
class EngineServer : public QObject
{
    Q_OBJECT
public:
    enum class StartResult { Listening, AlreadyRunning, Failed };

    explicit EngineServer(EngineCore *core, QObject *parent = nullptr);
    ~EngineServer() override;

    // Takes the name over from a daemon that died, never from one that still answers.
    [[nodiscard]] StartResult listen(const QString &socketName, QString *error = nullptr);
    [[nodiscard]] QString fullServerName() const { return m_server.fullServerName(); }
    [[nodiscard]] int connectionCount() const;

    // Tells every consumer that the engine stops, writes out what is pending and closes.
    void shutdown(int flushTimeoutMs = 2000);

private:
    void acceptConnections();
    [[nodiscard]] static bool someoneAnswers(const QString &socketName);

    QPointer<EngineCore> m_core;
    QLocalServer m_server;
    std::unique_ptr<QLockFile> m_lock;
};

} // namespace quillon
