#pragma once

#include <QDeadlineTimer>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>

// What every server a test starts needs: a free port, a wait until it listens, a clean stop.
namespace ServerProcess {

inline quint16 freePort()
{
    QTcpServer probe;
    return probe.listen(QHostAddress::LocalHost, 0) ? probe.serverPort() : 0;
}

// True once 127.0.0.1:port takes connections; false when the process ends first or time runs out.
inline bool waitUntilListening(QProcess &process, quint16 port, int timeoutMs = 20000)
{
    const QDeadlineTimer deadline(timeoutMs);
    while (!deadline.hasExpired() && process.state() != QProcess::NotRunning) {
        QTcpSocket probe;
        probe.connectToHost(QHostAddress::LocalHost, port);
        if (probe.waitForConnected(200))
            return true;
        process.waitForFinished(100);
    }
    return false;
}

inline void stop(QProcess &process, int timeoutMs = 15000)
{
    if (process.state() == QProcess::NotRunning)
        return;
    process.terminate();
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        process.waitForFinished(3000);
    }
}

} // namespace ServerProcess
