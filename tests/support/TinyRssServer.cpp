#include "TinyRssServer.h"

#include "ServerProcess.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFileInfo>
#include <QNetworkInterface>
#include <QProcess>

#include <unistd.h>

QString TinyRssServer::missing()
{
    for (const QString &path :
         QStringList{"/usr/share/tt-rss/www/api/index.php", "/usr/bin/php", "/usr/bin/psql"}) {
        if (!QFileInfo::exists(path))
            return path +
                   " is missing (scripts/setup-deps.sh installs tt-rss, php-cli, php-pgsql, postgresql)";
    }
    if (!QNetworkInterface::allAddresses().contains(QHostAddress(kFeedHost)))
        return "the server fetches feeds only from a private network, which needs root (unshare -n)";
    return {};
}

void TinyRssServer::enterPrivateNetwork(char **argv)
{
    if (qEnvironmentVariableIsSet("QUILLON_PRIVATE_NETWORK")) {
        QProcess::execute("ip", {"link", "set", "lo", "up"});
        QProcess::execute("ip", {"addr", "add", kFeedHost + "/32", "dev", "lo"});
    } else if (geteuid() == 0) {
        qputenv("QUILLON_PRIVATE_NETWORK", "1");
        QList<char *> arguments{const_cast<char *>("unshare"), const_cast<char *>("-n"),
                                const_cast<char *>("--")};
        for (char **arg = argv; *arg; ++arg)
            arguments.append(*arg);
        arguments.append(nullptr);
        execvp("unshare", arguments.data());
        qunsetenv("QUILLON_PRIVATE_NETWORK");
    }
}

bool TinyRssServer::start()
{
    m_port = ServerProcess::freePort();
    return script({"start", QString::number(m_port)});
}

QString TinyRssServer::sql(const QString &statement)
{
    QString output;
    script({"sql", statement}, &output);
    return output.trimmed();
}

bool TinyRssServer::script(const QStringList &arguments, QString *output)
{
    QProcess process;
    const QString path = qEnvironmentVariable("QUILLON_SOURCE_DIR") + "/tests/support/ttrss-server.sh";
    process.start("/bin/sh", QStringList{path, arguments.first(), m_dir.path()} + arguments.mid(1));
    // The event loop goes on: the server may be fetching a feed this process serves.
    const QDeadlineTimer deadline(60000);
    while (!process.waitForFinished(20) && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    if (process.state() != QProcess::NotRunning || process.exitCode() != 0) {
        m_error = arguments.first() + " failed: " + QString::fromLocal8Bit(process.readAllStandardError());
        return false;
    }
    if (output)
        *output = QString::fromUtf8(process.readAllStandardOutput());
    return true;
}
