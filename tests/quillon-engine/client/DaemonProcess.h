#pragma once

#include "SubscribeClient.h"

#include <QProcess>
#include <QTemporaryDir>

// The real engine daemon in a child process, on a temporary data folder and a socket name of
// its own, for tests and benchmarks.
class DaemonProcess
{
public:
    // An empty socketName picks a fresh one.
    explicit DaemonProcess(const QString &socketName = QString());
    ~DaemonProcess();

    // Starts the daemon and waits until it listens; false with the reason in errorText().
    [[nodiscard]] bool start(int timeoutMs = 15000);
    // Asks it to stop (SIGTERM) and returns its exit code, or -1 when it crashed or hung.
    int stop(int timeoutMs = 15000);

    [[nodiscard]] quillon::SubscribeClientPtr newClient() const;
    [[nodiscard]] QString socketName() const { return m_socketName; }
    [[nodiscard]] QString dataDir() const { return m_dir.path(); }
    [[nodiscard]] QString errorText() const { return m_error; }
    QProcess &process() { return m_process; }

    // One of the programs built beside the tests, the engine unless named.
    [[nodiscard]] static QString executable(const QString &program = QStringLiteral("quillon-engine"));
    [[nodiscard]] static QString freshSocketName();

private:
    QTemporaryDir m_dir;
    QString m_socketName;
    QProcess m_process;
    QString m_error;
};
