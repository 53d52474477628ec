#pragma once

// What the daemon tests use to speak to the engine as a raw client, a hostile one or another
// user: frames by hand, file modes, resident memory, probes run as another account, and a
// stand-in for the desktop's notification service.

#include "DaemonProcess.h"
#include "EngineSocketName.h"
#include "FrameReader.h"
#include "LinkedSubscribeClient.h"
#include "PrivateFiles.h"
#include "PrivateSessionBus.h"
#include "SocketLink.h"
#include "TestFiles.h"

#include <QCborArray>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QtEndian>

#include <pwd.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#ifdef QUILLON_TEST_DBUS
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#endif

#include <cstdio>
#include <cstring>

using namespace quillon;

namespace EngineServerProbes {

// Frames built by hand, so that the test pins the format rather than the codec.
inline QByteArray framed(const QByteArray &payload)
{
    QByteArray header(4, Qt::Uninitialized);
    qToBigEndian(quint32(payload.size()), header.data());
    return header + payload;
}

inline QByteArray requestFrame(qint64 id, const QString &operation, const QCborArray &args)
{
    const QCborMap request{{"id", id}, {"op", operation}, {"args", args}};
    return framed(QCborValue(request).toCbor());
}

// The next frame from a raw connection, or an empty map after 5 s.
inline QCborMap readFrame(QLocalSocket &socket, FrameReader &reader)
{
    const QDeadlineTimer deadline(5000);
    for (;;) {
        if (const auto payload = reader.next())
            return QCborValue::fromCbor(*payload).toMap();
        if (deadline.hasExpired() || !socket.waitForReadyRead(int(qMax<qint64>(1, deadline.remainingTime()))))
            return {};
        reader.append(socket.readAll());
    }
}

inline bool isClosedAfter(const QString &socketName, const QByteArray &bytes)
{
    QLocalSocket raw;
    raw.connectToServer(socketName);
    if (!raw.waitForConnected(2000))
        return false;
    raw.write(bytes);
    raw.flush();
    return raw.state() == QLocalSocket::UnconnectedState || raw.waitForDisconnected(5000);
}

inline int modeOf(const QString &path)
{
    struct stat info
    {
    };
    return ::stat(QFile::encodeName(path).constData(), &info) == 0 ? int(info.st_mode & 0777) : -1;
}

// The daemon's resident memory in KiB, from /proc.
inline qint64 residentKiB(qint64 pid)
{
    return TestFiles::procStatusKiB(QString::number(pid), "VmRSS");
}

// A raw connection, cheaper than a QLocalSocket when a thousand are held.
inline int rawConnect(const QString &path)
{
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray name = QFile::encodeName(path);
    std::memcpy(address.sun_path, name.constData(),
                size_t(qMin<qsizetype>(name.size(), sizeof(address.sun_path) - 1)));
    if (fd >= 0 && ::connect(fd, reinterpret_cast<sockaddr *>(&address), sizeof(address)) == 0)
        return fd;
    if (fd >= 0)
        ::close(fd);
    return -1;
}

// What a probe run as another user said (see probeMain).
inline QByteArray probeAs(uid_t uid, gid_t gid, const QString &mode, const QString &path,
                          QProcess *keep = nullptr)
{
    QProcess local;
    QProcess &probe = keep ? *keep : local;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("QUILLON_PROBE", mode);
    env.insert("QUILLON_PROBE_PATH", path);
    env.insert("HOME", "/nonexistent");
    probe.setProcessEnvironment(env);
    probe.start("setpriv", {QStringLiteral("--reuid=%1").arg(uid), QStringLiteral("--regid=%1").arg(gid),
                            "--clear-groups", QCoreApplication::applicationFilePath()});
    if (!probe.waitForStarted(5000))
        return "not started";
    QByteArray said;
    const QDeadlineTimer deadline(15000);
    while (!said.contains('\n') && !deadline.hasExpired() && probe.waitForReadyRead(1000))
        said += probe.readAllStandardOutput();
    said += probe.readAllStandardOutput();
    if (!keep)
        probe.waitForFinished(5000);
    return said.trimmed();
}

// Run as another user by anotherUserCannotStopImpersonateOrRead: says one line and ends.
inline int probeMain(const QString &mode, const QString &path)
{
    auto say = [](const char *text) {
        std::printf("%s\n", text);
        std::fflush(stdout);
    };
    if (mode == QLatin1String("read")) {
        QFile file(path);
        say(file.open(QIODevice::ReadOnly) ? "read" : "denied");
        return 0;
    }
    if (mode == QLatin1String("listen")) {
        QLocalServer server;
        if (!server.listen(path)) {
            say("cannot listen");
            return 0;
        }
        say("listening");
        QTimer::singleShot(60000, qApp, &QCoreApplication::quit);
        return QCoreApplication::exec();
    }
    QLocalSocket socket;
    socket.connectToServer(path);
    if (!socket.waitForConnected(2000)) {
        say("unreachable");
        return 0;
    }
    socket.write(requestFrame(1, "Log", {"stranger", 1}));
    socket.flush();
    FrameReader reader;
    say(readFrame(socket, reader).isEmpty() ? "refused" : "answered");
    return 0;
}

} // namespace EngineServerProbes

using namespace EngineServerProbes;

#ifdef QUILLON_TEST_DBUS
// The desktop's notification service, as the engine sees it on a private session bus.
class FakeNotifications : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")
public:
    QStringList shown;

public Q_SLOTS:
    uint Notify(const QString &, uint, const QString &, const QString &summary, const QString &body,
                const QStringList &, const QVariantMap &, int)
    {
        shown.append(summary + ": " + body);
        return uint(shown.size());
    }
};
#endif
