#include "SquidProxy.h"

#include "ServerProcess.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <pwd.h>
#include <unistd.h>

namespace {
const QString kSquid = QStringLiteral("/usr/sbin/squid");
const QString kHelpers = QStringLiteral("/usr/lib/squid/");

// Squid started as root runs as "proxy": its folder must be that user's.
QString takeOverForSquid(const QString &folder)
{
    if (geteuid() != 0)
        return {};
    const passwd *proxy = getpwnam("proxy");
    if (!proxy)
        return QStringLiteral("squid runs as root only with the user proxy, which is missing");
    QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner |
                                      QFileDevice::ReadOther | QFileDevice::ExeOther);
    for (const QFileInfo &file : QDir(folder).entryInfoList(QDir::Files | QDir::NoDotAndDotDot))
        (void)chown(QFile::encodeName(file.filePath()).constData(), proxy->pw_uid, proxy->pw_gid);
    (void)chown(QFile::encodeName(folder).constData(), proxy->pw_uid, proxy->pw_gid);
    return {};
}
} // namespace

SquidProxy::~SquidProxy()
{
    ServerProcess::stop(m_squid, 10000);
}

QString SquidProxy::missing()
{
    for (const QString &tool : {kSquid, kHelpers + "basic_ncsa_auth", kHelpers + "ntlm_fake_auth",
                                QStringLiteral("/usr/bin/htpasswd")}) {
        if (!QFileInfo(tool).isExecutable())
            return QStringLiteral(
                       "%1 is not installed (scripts/setup-deps.sh installs squid and apache2-utils)")
                .arg(tool);
    }
    return {};
}

bool SquidProxy::start(Login login, const QHash<QString, QString> &hosts)
{
    m_port = ServerProcess::freePort();
    if (!m_dir.isValid() || m_port == 0 || !writeFiles(login, hosts))
        return false;
    if (const QString refused = takeOverForSquid(m_dir.path()); !refused.isEmpty()) {
        m_error = refused;
        return false;
    }
    m_squid.setProcessChannelMode(QProcess::MergedChannels);
    m_squid.start(kSquid, {"-N", "-f", m_dir.filePath("squid.conf")});
    if (ServerProcess::waitUntilListening(m_squid, m_port))
        return true;
    m_error = m_squid.state() == QProcess::NotRunning
                  ? "squid stopped: " + QString::fromLocal8Bit(m_squid.readAll())
                  : "squid did not listen within 20 seconds";
    return false;
}

bool SquidProxy::writeFiles(Login login, const QHash<QString, QString> &hosts)
{
    if (login == Login::Basic &&
        QProcess::execute("htpasswd", {"-bc", m_dir.filePath("passwd"), kUser, kPassword}) != 0) {
        m_error = "htpasswd could not write the password file";
        return false;
    }
    QFile hostFile(m_dir.filePath("hosts"));
    QFile config(m_dir.filePath("squid.conf"));
    if (!hostFile.open(QIODevice::WriteOnly) || !config.open(QIODevice::WriteOnly)) {
        m_error = "cannot write squid's files in " + m_dir.path();
        return false;
    }
    for (auto it = hosts.cbegin(); it != hosts.cend(); ++it)
        hostFile.write((it.value() + ' ' + it.key() + '\n').toUtf8());
    const QString auth = login == Login::Basic ? "auth_param basic program " + kHelpers + "basic_ncsa_auth " +
                                                     m_dir.filePath("passwd")
                                               : "auth_param ntlm program " + kHelpers + "ntlm_fake_auth";
    const QString folder = m_dir.path();
    config.write(QStringLiteral("http_port 127.0.0.1:%1\n").arg(m_port).toUtf8());
    config.write(QStringLiteral("pid_filename %1/squid.pid\naccess_log stdio:%1/access.log\n"
                                "cache_log %1/cache.log\ncoredump_dir %1\nhosts_file %1/hosts\n")
                     .arg(folder)
                     .toUtf8());
    config.write("cache_store_log none\nnetdb_filename none\npinger_enable off\ncache deny all\n"
                 "shutdown_lifetime 0 seconds\nlogfile_rotate 0\nbuffered_logs off\n");
    config.write(
        (auth + "\nacl login proxy_auth REQUIRED\nhttp_access allow login\nhttp_access deny all\n").toUtf8());
    return true;
}

QString SquidProxy::address() const
{
    return QStringLiteral("127.0.0.1:%1").arg(m_port);
}

QByteArray SquidProxy::accessLog() const
{
    QFile log(m_dir.filePath("access.log"));
    return log.open(QIODevice::ReadOnly) ? log.readAll() : QByteArray();
}
