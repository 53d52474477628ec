#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

// Debian's dovecot on 127.0.0.1, started with a temporary configuration, a passwd-file user
// and Maildir mail under a temporary home; stopped when this goes.
class DovecotServer
{
public:
    DovecotServer();
    ~DovecotServer();

    // False with a reason when dovecot is missing or does not start. Started again after
    // stop(), it listens on the same port with the same mail.
    [[nodiscard]] bool start(QString *why);
    void stop();
    [[nodiscard]] quint16 port() const { return m_port; }
    [[nodiscard]] QString user() const { return QStringLiteral("reader"); }
    [[nodiscard]] QString password() const { return QStringLiteral("secret"); }
    // The user's Maildir as the server keeps it.
    [[nodiscard]] QString maildir() const { return m_dir.filePath(QStringLiteral("home/reader/Maildir")); }

    [[nodiscard]] static QString executable();

private:
    [[nodiscard]] QString config(quint32 uid, quint32 gid) const;

    QTemporaryDir m_dir;
    quint16 m_port = 0;
    bool m_started = false;
};
