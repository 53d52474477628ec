#pragma once

#include <QByteArray>
#include <QHash>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

// Debian's squid on 127.0.0.1 for proxy tests, with its configuration, logs and host table in a
// folder of its own. It asks for a login: Basic against one user and password, or NTLM through
// squid's fake helper, which takes any DOMAIN\user. Names given in hosts resolve to the
// addresses given, so a test can reach its local server under a name only the proxy knows.
class SquidProxy
{
public:
    enum class Login { Basic, Ntlm };

    SquidProxy() = default;
    ~SquidProxy();
    SquidProxy(const SquidProxy &) = delete;
    SquidProxy &operator=(const SquidProxy &) = delete;

    // Why proxy tests cannot run here; empty when squid and its helpers are installed.
    [[nodiscard]] static QString missing();
    [[nodiscard]] bool start(Login login, const QHash<QString, QString> &hosts);
    [[nodiscard]] const QString &errorText() const { return m_error; }
    // "127.0.0.1:<port>"
    [[nodiscard]] QString address() const;
    [[nodiscard]] QByteArray accessLog() const;

    // The one Basic login the proxy takes.
    static inline const QString kUser = QStringLiteral("alice");
    static inline const QString kPassword = QStringLiteral("wonderland");

private:
    [[nodiscard]] bool writeFiles(Login login, const QHash<QString, QString> &hosts);

    QTemporaryDir m_dir;
    QProcess m_squid;
    quint16 m_port = 0;
    QString m_error;
};
