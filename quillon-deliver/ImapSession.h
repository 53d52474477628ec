#pragma once

#include <QByteArray>
#include <QList>
#include <QSslSocket>
#include <QString>

// One IMAP4rev1 connection, used synchronously: each command waits for its tagged answer
// (30 seconds at most). Enough of the protocol for a delivery: LOGIN, LIST, CREATE,
// SELECT, APPEND with a literal, UID FETCH/STORE/MOVE/EXPUNGE, STATUS.
class ImapSession
{
public:
    struct Account
    {
        QString host = QStringLiteral("127.0.0.1");
        quint16 port = 143;
        bool tls = false; // implicit TLS (port 993 usually)
        QString user;
        QString password;
    };
    struct Answer
    {
        bool ok = false;
        QList<QByteArray> untagged; // each with its literals inlined, without "* "
        QByteArray status;          // the tagged line's text
    };

    [[nodiscard]] bool open(const Account &account, QString *error);
    [[nodiscard]] bool isOpen() const;
    Answer command(const QByteArray &line);
    // APPEND of one message (CRLF line ends) with the given flags.
    Answer append(const QByteArray &mailbox, const QByteArray &flags, const QByteArray &message);
    [[nodiscard]] QByteArray separator() const { return m_separator; }

    // A quoted IMAP string.
    [[nodiscard]] static QByteArray quoted(const QByteArray &text);
    // Mailbox names travel in modified UTF-7 (RFC 3501, 5.1.3).
    [[nodiscard]] static QByteArray encodeName(const QString &name);
    [[nodiscard]] static QString decodeName(const QByteArray &name);

private:
    // One response line with its literals, or empty on time-out or a closed connection.
    [[nodiscard]] QByteArray readResponse();
    [[nodiscard]] QByteArray readLine();
    Answer finish(const QByteArray &tag);
    [[nodiscard]] bool mayLogIn(const Account &account, const QByteArray &greeting, QString *error);
    // Closes the connection after the server broke a limit; the reason goes into the answer.
    void giveUp(const QString &why);

    QSslSocket m_socket;
    QByteArray m_separator = ".";
    int m_lastTag = 0;
    QString m_failure;
};
