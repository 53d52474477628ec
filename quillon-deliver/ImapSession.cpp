#include "ImapSession.h"

#include "DeliveryLogging.h"

#include <QDeadlineTimer>

namespace {
constexpr int kTimeoutMs = 30000;
// A server that sends more than this in one line or one literal is not believed.
constexpr qint64 kMaxLine = 1024 * 1024;
constexpr qint64 kMaxLiteral = 64 * 1024 * 1024;
} // namespace

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
            qCWarning(lcDeliver) << "the IMAP server sent an endless line; disconnecting";
            m_socket.abort();
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
            if (size < 0 || size > kMaxLiteral) {
                qCWarning(lcDeliver) << "the IMAP server announced a literal of" << size
                                     << "bytes; disconnecting";
                m_socket.abort();
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
        return response;
    }
}

ImapSession::Answer ImapSession::finish(const QByteArray &tag)
{
    Answer answer;
    for (;;) {
        const QByteArray line = readResponse();
        if (line.isEmpty()) {
            answer.status = "no answer";
            return answer;
        }
        if (line.startsWith("* ")) {
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
