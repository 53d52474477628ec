#include "DovecotServer.h"

#include "ServerProcess.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTcpSocket>
#include <QTest>

#include <utility>

#ifdef Q_OS_UNIX
#include <grp.h>
#include <pwd.h>
#include <unistd.h>
#endif

namespace {
bool writeText(const QString &path, const QString &text)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(text.toUtf8()) >= 0;
}
} // namespace

DovecotServer::DovecotServer() = default;

DovecotServer::~DovecotServer()
{
    stop();
}

void DovecotServer::stop()
{
    if (!std::exchange(m_started, false))
        return;
    QProcess::execute(executable(), {QStringLiteral("-c"), m_dir.filePath(QStringLiteral("dovecot.conf")),
                                     QStringLiteral("stop")});
    // The master goes in the background; gone once the port takes no more connections.
    const bool gone = QTest::qWaitFor(
        [this] {
            QTcpSocket socket;
            socket.connectToHost(QHostAddress::LocalHost, m_port);
            return !socket.waitForConnected(200);
        },
        10000);
    if (!gone)
        qWarning("dovecot still answers on port %u", unsigned(m_port));
}

QString DovecotServer::executable()
{
    const QString found = QStandardPaths::findExecutable(
        QStringLiteral("dovecot"), {QStringLiteral("/usr/sbin"), QStringLiteral("/usr/local/sbin")});
    return found.isEmpty() ? QStandardPaths::findExecutable(QStringLiteral("dovecot")) : found;
}

QString DovecotServer::config(quint32 uid, quint32 gid) const
{
    const QString d = m_dir.path();
    // Run as root, dovecot's own accounts do the work; run as a user, everything is that user.
    const bool root = ::getuid() == 0;
    const QString internal =
        root ? QStringLiteral("dovecot") : QString::fromLocal8Bit(::getpwuid(::getuid())->pw_name);
    const QString login = root ? QStringLiteral("dovenull") : internal;
    return QStringLiteral(
               "protocols = imap\nlisten = 127.0.0.1\nbase_dir = %1/run\nstate_dir = %1/state\n"
               "log_path = %1/dovecot.log\nssl = no\ndisable_plaintext_auth = no\nauth_mechanisms = plain\n"
               "first_valid_uid = 0\ndefault_internal_user = %2\ndefault_login_user = %3\n"
               "passdb {\n  driver = passwd-file\n  args = scheme=PLAIN username_format=%u %1/passwd\n}\n"
               "userdb {\n  driver = static\n  args = uid=%4 gid=%5 home=%1/home/%u\n}\n"
               "mail_location = maildir:~/Maildir\n"
               "service imap-login {\n  inet_listener imap {\n    address = 127.0.0.1\n    port = %6\n  }\n"
               "  inet_listener imaps {\n    port = 0\n  }\n  chroot =\n}\n"
               "service anvil {\n  chroot =\n}\n"
               "service auth {\n  user = %7\n}\nservice auth-worker {\n  user = %7\n}\n")
        .arg(d, internal, login)
        .arg(uid)
        .arg(gid)
        .arg(m_port)
        .arg(root ? QStringLiteral("root") : internal);
}

bool DovecotServer::start(QString *why)
{
    if (executable().isEmpty()) {
        *why = QStringLiteral(
            "dovecot is not installed (Debian package dovecot-imapd; scripts/setup-deps.sh installs it)");
        return false;
    }
    if (m_port == 0 && (m_port = ServerProcess::freePort()) == 0)
        return false;
#ifdef Q_OS_UNIX
    // Mail belongs to dovecot's account when the test runs as root (dovecot refuses uid 0).
    quint32 uid = ::getuid(), gid = ::getgid();
    if (uid == 0) {
        const passwd *account = ::getpwnam("dovecot");
        if (!account) {
            *why = QStringLiteral("the dovecot account is missing");
            return false;
        }
        uid = account->pw_uid;
        gid = account->pw_gid;
    }
    QFile::setPermissions(m_dir.path(), QFile::permissions(m_dir.path()) | QFile::ExeOther | QFile::ExeGroup |
                                            QFile::ReadOther | QFile::ReadGroup);
    QDir().mkpath(m_dir.filePath(QStringLiteral("home")));
    if (::chown(QFile::encodeName(m_dir.filePath(QStringLiteral("home"))).constData(), uid, gid) != 0 &&
        ::getuid() == 0) {
        *why = QStringLiteral("cannot hand the mail folder to dovecot");
        return false;
    }
#else
    const quint32 uid = 0, gid = 0;
#endif
    if (!writeText(m_dir.filePath(QStringLiteral("passwd")), QStringLiteral("reader:{PLAIN}secret\n")) ||
        !writeText(m_dir.filePath(QStringLiteral("dovecot.conf")), config(uid, gid)))
        return false;
    QProcess dovecot;
    dovecot.setProcessChannelMode(QProcess::MergedChannels);
    dovecot.start(executable(), {QStringLiteral("-c"), m_dir.filePath(QStringLiteral("dovecot.conf"))});
    if (!dovecot.waitForFinished(20000) || dovecot.exitCode() != 0) {
        *why = QStringLiteral("dovecot did not start: %1").arg(QString::fromLocal8Bit(dovecot.readAll()));
        return false;
    }
    m_started = true;
    // The master forks into the background; ready once the listener takes connections.
    const auto answers = [this] {
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, m_port);
        return socket.waitForConnected(200) && socket.waitForReadyRead(2000) &&
               socket.readAll().startsWith("* OK");
    };
    if (!QTest::qWaitFor(answers, 20000)) {
        QFile log(m_dir.filePath(QStringLiteral("dovecot.log")));
        *why = QStringLiteral("dovecot does not answer: %1")
                   .arg(log.open(QIODevice::ReadOnly) ? QString::fromLocal8Bit(log.readAll().right(600))
                                                      : QString());
        return false;
    }
    return true;
}
