#pragma once

#include <QString>
#include <QTemporaryDir>

// Debian's Tiny Tiny RSS for sync tests (ttrss-server.sh): PostgreSQL on a unix socket and
// php -S on 127.0.0.1, all in a temporary folder, user "admin" with the API switched on. The
// server fetches feeds only from port 80 of an address that is not local: tests serve them
// on kFeedHost inside a private network (enterPrivateNetwork).
class TinyRssServer
{
public:
    TinyRssServer() = default;
    ~TinyRssServer() { script({"stop"}); }
    TinyRssServer(const TinyRssServer &) = delete;
    TinyRssServer &operator=(const TinyRssServer &) = delete;

    static inline const QString kFeedHost = QStringLiteral("198.18.0.1");
    static inline const QString kUser = QStringLiteral("admin");
    static inline const QString kPassword = QStringLiteral("password");

    // Why the server cannot run here; empty when it can.
    [[nodiscard]] static QString missing();
    // As root: runs the program again in a network of its own (unshare -n) with kFeedHost on
    // its loopback; elsewhere does nothing.
    static void enterPrivateNetwork(char **argv);

    [[nodiscard]] bool start();
    // php -S alone, as a server that goes away and comes back.
    bool stopWeb() { return script({"stopweb"}); }
    [[nodiscard]] bool startWeb() { return script({"web", QString::number(m_port)}); }
    [[nodiscard]] const QString &errorText() const { return m_error; }
    // What a user would type: the server's base address, without the API's path.
    [[nodiscard]] QString address() const { return QStringLiteral("http://127.0.0.1:%1").arg(m_port); }
    // One SQL statement on the server's database; its rows as "a|b" lines.
    QString sql(const QString &statement);
    // The server's updater: fetches every feed that is due.
    bool update() { return script({"update"}); }

private:
    bool script(const QStringList &arguments, QString *output = nullptr);

    QTemporaryDir m_dir;
    quint16 m_port = 0;
    QString m_error;
};
