#include "DaemonProcess.h"

#include "EngineSocketName.h"
#include "LinkedSubscribeClient.h"
#include "SocketLink.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>

#include <atomic>

DaemonProcess::DaemonProcess(const QString &socketName)
    : m_socketName(socketName.isEmpty() ? freshSocketName() : socketName)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
}

DaemonProcess::~DaemonProcess()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.kill();
        m_process.waitForFinished(5000);
    }
}

QString DaemonProcess::executable(const QString &program)
{
    QString folder = qEnvironmentVariable("QUILLON_BIN_DIR");
    if (folder.isEmpty())
        folder = QCoreApplication::applicationDirPath();
#ifdef Q_OS_WIN
    return QDir(folder).filePath(program + QStringLiteral(".exe"));
#else
    return QDir(folder).filePath(program);
#endif
}

QString DaemonProcess::freshSocketName()
{
    static std::atomic<int> counter{0};
    return quillon::EngineSocketPath(
        QStringLiteral("quillon-test-%1-%2").arg(QCoreApplication::applicationPid()).arg(++counter));
}

bool DaemonProcess::start(int timeoutMs)
{
    // Tests never write to the desktop keyring of whoever runs them, unless one asks to.
    QProcessEnvironment env = m_process.processEnvironment();
    if (env.isEmpty())
        env = QProcessEnvironment::systemEnvironment();
    if (!env.contains(QStringLiteral("QUILLON_ENGINE_SECRETS")))
        env.insert(QStringLiteral("QUILLON_ENGINE_SECRETS"), QStringLiteral("file"));
    m_process.setProcessEnvironment(env);
    m_process.start(executable(),
                    {QStringLiteral("--data-dir"), m_dir.path(), QStringLiteral("--socket"), m_socketName});
    if (!m_process.waitForStarted(timeoutMs)) {
        m_error = QStringLiteral("%1 did not start: %2").arg(executable(), m_process.errorString());
        return false;
    }
    QByteArray output;
    const QDeadlineTimer deadline(timeoutMs);
    while (!output.contains("listening on")) {
        if (m_process.state() == QProcess::NotRunning || deadline.hasExpired()) {
            m_error = QStringLiteral("the engine did not start listening (exit code %1, said \"%2\")")
                          .arg(m_process.exitCode())
                          .arg(QString::fromLocal8Bit(output));
            return false;
        }
        m_process.waitForReadyRead(int(qMax<qint64>(1, deadline.remainingTime())));
        output += m_process.readAllStandardOutput();
    }
    return true;
}

int DaemonProcess::stop(int timeoutMs)
{
    if (m_process.state() == QProcess::NotRunning)
        return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
    m_process.terminate();
    if (!m_process.waitForFinished(timeoutMs)) {
        m_process.kill();
        m_process.waitForFinished(timeoutMs);
        return -1;
    }
    return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}

quillon::SubscribeClientPtr DaemonProcess::newClient() const
{
    return quillon::LinkedSubscribeClient::create(quillon::SocketLink::open(m_socketName));
}
