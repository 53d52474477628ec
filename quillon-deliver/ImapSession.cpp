#include "ImapSession.h"

#include "DeliveryLogging.h"

#include <QDeadlineTimer>

namespace {
constexpr int kTimeoutMs = 30000;
// A server that sends more than this in one line, one literal, one response, or untagged
// data before a command's answer is not believed: the delivery reads flags and short headers.
constexpr qint64 kMaxLine = 1024 * 1024;
constexpr qint64 kMaxLiteral = 8 * 1024 * 1024;
constexpr qint64 kMaxResponse = 16 * 1024 * 1024;
constexpr qint64 kMaxUntagged = 16 * 1024 * 1024;
} // namespace

void ImapSession::giveUp(const QString &why)
{
    qCWarning(lcDeliver).noquote() << "IMAP:" << why << "- disconnecting";
    m_failure = why;
    m_socket.abort();
}

// Never a password in clear: not when TLS was asked for and is missing, not when the server
// itself forbids a login on this connection.
bool ImapSession::mayLogIn(const Account &account, const QByteArray &greeting, QString *error)
{
    QByteArray capabilities = greeting;
    if (!greeting.contains("[CAPABILITY ")) {
        for (const QByteArray &line : command("CAPABILITY").untagged)
            capabilities += ' ' + line;
    }
    QString why;
    if (!isOpen())
        why = m_failure.isEmpty() ? QStringLiteral("the connection closed") : m_failure;
    else if (account.tls && !m_socket.isEncrypted())
        why = QStringLiteral("TLS was asked for and not established");
    else if (capabilities.toUpper().contains(" LOGINDISABLED"))
        why = QStringLiteral("the server forbids a login on this connection (LOGINDISABLED); use TLS");
    if (why.isEmpty())
        return true;
    if (error)
        *error = QStringLiteral("No login sent to the IMAP server %1: %2").arg(account.host, why);
    m_socket.abort();
    return false;
}

bool ImapSession::open(const Account &account, QString *error)
{
    if (account.tls)
        m_socket.connectToHostEncrypted(account.host, account.port);
    else
        m_socket.connectToHost(account.host, account.port);
    const bool connected =
        account.tls ? m_socket.waitForEncrypted(kTimeoutMs) : m_socket.waitForConnected(kTimeoutMs);
    const QByteArray greeting = connected ? readResponse() : QByteArray();
    if (!greeting.startsWith("* OK")) {
        if (error)
            *error = QStringLiteral("The IMAP server %1:%2 does not answer: %3")
                         .arg(account.host)
                         .arg(account.port)
                         .arg(m_socket.errorString());
        return false;
    }
    if (!mayLogIn(account, greeting, error))
        return false;
    const Answer login =
        command("LOGIN " + quoted(account.user.toUtf8()) + ' ' + quoted(account.password.toUtf8()));
    if (!login.ok) {
        if (error)
            *error =
                QStringLiteral("The IMAP server refused the login: %1").arg(QString::fromUtf8(login.status));
        return false;
    }
    // LIST "" "" names the hierarchy separator.
    for (const QByteArray &line : command("LIST \"\" \"\"").untagged) {
        const qsizetype open = line.indexOf(") \"");
        if (line.startsWith("LIST") && open > 0)
            m_separator = line.mid(open + 3, 1);
    }
    return true;
}

bool ImapSession::isOpen() const
{
    return m_socket.state() == QAbstractSocket::ConnectedState;
}

QByteArray ImapSession::readLine()
{
    const QDeadlineTimer deadline(kTimeoutMs);
    while (!m_socket.canReadLine()) {
        if (m_socket.bytesAvailable() > kMaxLine) {
            giveUp(QStringLiteral("the server sent a line over %1 bytes").arg(kMaxLine));
        }
        if (!isOpen() || deadline.hasExpired() || !m_socket.waitForReadyRead(int(deadline.remainingTime())))
            return {};
    }
    return m_socket.readLine();
}

QByteArray ImapSession::readResponse()
{
    QByteArray response;
    for (;;) {
        QByteArray line = readLine();
        if (line.isEmpty())
            return {};
        // A literal "{N}" at the end of a line: N bytes follow, then the line goes on.
        if (line.endsWith("}\r\n") && line.contains('{')) {
            const qsizetype open = line.lastIndexOf('{');
            const qint64 size = line.mid(open + 1, line.size() - open - 4).toLongLong();
            if (size < 0 || size > kMaxLiteral || response.size() + size > kMaxResponse) {
                giveUp(QStringLiteral("the server announced a literal of %1 bytes").arg(size));
                return {};
            }
            response += line.left(open);
            QByteArray literal;
            const QDeadlineTimer deadline(kTimeoutMs);
            while (literal.size() < size && !deadline.hasExpired()) {
                if (m_socket.bytesAvailable() == 0 &&
                    !m_socket.waitForReadyRead(int(deadline.remainingTime())))
                    return {};
                literal += m_socket.read(size - literal.size());
            }
            response += quoted(literal);
            continue;
        }
        response += line.chopped(2);
        if (response.size() > kMaxResponse) {
            giveUp(QStringLiteral("the server sent a response over %1 bytes").arg(kMaxResponse));
            return {};
        }
        return response;
    }
}

ImapSession::Answer ImapSession::finish(const QByteArray &tag)
{
    Answer answer;
    qint64 untagged = 0;
    for (;;) {
        const QByteArray line = readResponse();
        if (line.isEmpty()) {
            answer.status = m_failure.isEmpty() ? QByteArray("no answer") : m_failure.toUtf8();
            return answer;
        }
        if (line.startsWith("* ")) {
            untagged += line.size() + 64; // what a list entry costs beside its bytes
            if (untagged > kMaxUntagged) {
                giveUp(QStringLiteral("the server sent over %1 bytes of untagged data without answering")
                           .arg(kMaxUntagged));
                answer.untagged.clear();
                answer.status = m_failure.toUtf8();
                return answer;
            }
            answer.untagged.append(line.mid(2));
        } else if (line.startsWith(tag + ' ')) {
            answer.status = line.mid(tag.size() + 1);
            answer.ok = answer.status.startsWith("OK");
            return answer;
        }
    }
}

ImapSession::Answer ImapSession::command(const QByteArray &line)
{
    const QByteArray tag = 'q' + QByteArray::number(++m_lastTag);
    m_socket.write(tag + ' ' + line + "\r\n");
    return finish(tag);
}

ImapSession::Answer ImapSession::append(const QByteArray &mailbox, const QByteArray &flags,
                                        const QByteArray &message)
{
    const QByteArray tag = 'q' + QByteArray::number(++m_lastTag);
    // LITERAL+ would save a round trip; the plain literal works with every server.
    m_socket.write(tag + " APPEND " + mailbox + " (" + flags + ") {" + QByteArray::number(message.size()) +
                   "}\r\n");
    const QByteArray go = readResponse();
    if (!go.startsWith('+')) {
        Answer refused;
        refused.status = go;
        return refused;
    }
    m_socket.write(message + "\r\n");
    return finish(tag);
}

QByteArray ImapSession::quoted(const QByteArray &text)
{
    QByteArray out = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\')
            out += '\\';
        if (c != '\r' && c != '\n')
            out += c;
    }
    return out + '"';
}

QByteArray ImapSession::encodeName(const QString &name)
{
    QByteArray out;
    QString pending; // characters waiting for base64
    const auto flush = [&out, &pending] {
        if (pending.isEmpty())
            return;
        QByteArray utf16;
        for (const QChar c : std::as_const(pending)) {
            utf16 += char(c.unicode() >> 8);
            utf16 += char(c.unicode() & 0xff);
        }
        out += '&' + utf16.toBase64(QByteArray::OmitTrailingEquals).replace('/', ',') + '-';
        pending.clear();
    };
    for (const QChar c : name) {
        if (c.unicode() >= 0x20 && c.unicode() <= 0x7e) {
            flush();
            out += c == QLatin1Char('&') ? QByteArray("&-") : QByteArray(1, char(c.unicode()));
        } else {
            pending += c;
        }
    }
    flush();
    return out;
}

QString ImapSession::decodeName(const QByteArray &name)
{
    QString out;
    for (qsizetype i = 0; i < name.size(); ++i) {
        const qsizetype end = name.at(i) == '&' ? name.indexOf('-', i) : -1;
        if (end < 0) {
            out += QLatin1Char(name.at(i));
            continue;
        }
        if (end == i + 1) {
            out += QLatin1Char('&');
        } else {
            QByteArray b64 = name.mid(i + 1, end - i - 1).replace(',', '/');
            const QByteArray utf16 = QByteArray::fromBase64(b64);
            for (qsizetype k = 0; k + 1 < utf16.size(); k += 2)
                out += QChar(char16_t((uchar(utf16.at(k)) << 8) | uchar(utf16.at(k + 1))));
        }
        i = end;
    }
    return out;
}
