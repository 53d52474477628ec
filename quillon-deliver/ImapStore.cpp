#include "ImapStore.h"

#include "DeliveryLogging.h"

#include <QRegularExpression>

namespace {
const QByteArray kKeyHeader = "X-Quillon-Key";

QByteArray uidSet(const QList<QByteArray> &uids)
{
    return uids.isEmpty() ? QByteArray() : QList<QByteArray>(uids).join(',');
}
} // namespace

QString ImapStore::describe() const
{
    return QStringLiteral("imap%1://%2@%3:%4")
        .arg(m_account.tls ? QStringLiteral("s") : QString(), m_account.user, m_account.host)
        .arg(m_account.port);
}

bool ImapStore::open(QString *error)
{
    m_session = std::make_unique<ImapSession>();
    m_known.clear();
    return m_session->open(m_account, error);
}

bool ImapStore::ensureOpen()
{
    if (m_session && m_session->isOpen())
        return true;
    QString error;
    if (open(&error)) {
        m_lastError.clear();
        return true;
    }
    // Said once per reason: the delivery tries again and again while the server is away.
    if (error != std::exchange(m_lastError, error))
        qCWarning(lcDeliver).noquote() << error;
    return false;
}

QByteArray ImapStore::mailboxName(const Folder &folder) const
{
    QList<QByteArray> names;
    for (const QString &name : folder)
        names.append(ImapSession::encodeName(name));
    return names.join(m_session ? m_session->separator() : QByteArray("."));
}

QByteArray ImapStore::mailbox(const Folder &folder) const
{
    return folder.isEmpty() ? QByteArray("INBOX") : ImapSession::quoted(mailboxName(folder));
}

bool ImapStore::select(const Folder &folder)
{
    return ensureOpen() && m_session->command("SELECT " + mailbox(folder)).ok;
}

QHash<QString, ImapStore::Message> ImapStore::messages(const Folder &folder)
{
    QHash<QString, Message> found;
    if (!select(folder))
        return found;
    static const QRegularExpression uid(QStringLiteral("UID (\\d+)"));
    static const QRegularExpression key(QStringLiteral("X-Quillon-Key: *(a\\d+)"),
                                        QRegularExpression::CaseInsensitiveOption);
    const ImapSession::Answer answer =
        m_session->command("UID FETCH 1:* (UID FLAGS BODY.PEEK[HEADER.FIELDS (" + kKeyHeader + ")])");
    for (const QByteArray &line : answer.untagged) {
        const QString text = QString::fromUtf8(line);
        const auto k = key.match(text);
        if (k.hasMatch())
            found.insert(k.captured(1),
                         {uid.match(text).captured(1).toUtf8(), text.contains(QLatin1String("\\Seen"))});
    }
    m_known.insert(mailbox(folder), found);
    return found;
}

bool ImapStore::add(const Folder &folder, const QString &key, const QByteArray &message, QString *error)
{
    if (!ensureOpen()) {
        if (error)
            *error = QStringLiteral("The IMAP server cannot be reached");
        return false;
    }
    const QByteArray box = mailbox(folder);
    if (!m_known.contains(box)) {
        if (!exists(folder) && !create(folder, error))
            return false;
        (void)messages(folder);
    }
    if (m_known[box].contains(key))
        return true;
    QByteArray bytes = kKeyHeader + ": " + key.toLatin1() + "\n" + message;
    if (!bytes.contains("\r\n"))
        bytes.replace("\n", "\r\n");
    const ImapSession::Answer answer = m_session->append(box, QByteArray(), bytes);
    if (!answer.ok) {
        if (error)
            *error = QStringLiteral("APPEND to %1 failed: %2")
                         .arg(QString::fromUtf8(box), QString::fromUtf8(answer.status));
        return false;
    }
    m_known[box].insert(key, {});
    return true;
}

void ImapStore::expunge(const QList<QByteArray> &uids)
{
    if (uids.isEmpty())
        return;
    m_session->command("UID STORE " + uidSet(uids) + " +FLAGS.SILENT (\\Deleted)");
    m_session->command("UID EXPUNGE " + uidSet(uids));
}

bool ImapStore::remove(const Folder &folder, const QString &key)
{
    const auto found = messages(folder);
    const auto it = found.constFind(key);
    if (it != found.cend())
        expunge({it->uid});
    m_known.remove(mailbox(folder));
    return true;
}

bool ImapStore::move(const Folder &from, const Folder &to, QString *error)
{
    if (from == to || !exists(from))
        return true;
    if (!exists(to) && !create(to, error))
        return false;
    QList<QByteArray> uids;
    for (const Message &m : messages(from))
        uids.append(m.uid);
    if (!uids.isEmpty() && !m_session->command("UID MOVE " + uidSet(uids) + ' ' + mailbox(to)).ok) {
        if (error)
            *error = QStringLiteral("The IMAP server could not move the messages");
        return false;
    }
    m_known.remove(mailbox(from));
    m_known.remove(mailbox(to));
    removeAll(from); // drops the mailbox, now empty of ours, and the levels it leaves empty
    return true;
}

void ImapStore::removeAll(const Folder &folder)
{
    QList<QByteArray> uids;
    for (const Message &m : messages(folder))
        uids.append(m.uid);
    expunge(uids);
    m_known.remove(mailbox(folder));
    if (dropIfUnused(folder))
        dropEmptyParents(folder, {}, [this](const Folder &parent) { return dropIfUnused(parent); });
}

bool ImapStore::dropIfUnused(const Folder &folder)
{
    if (folder.isEmpty() || !ensureOpen())
        return false;
    const ImapSession::Answer status = m_session->command("STATUS " + mailbox(folder) + " (MESSAGES)");
    if (status.untagged.isEmpty() || !status.untagged.first().contains("MESSAGES 0)"))
        return false;
    const QByteArray inside = ImapSession::quoted(mailboxName(folder) + m_session->separator() + '%');
    for (const QByteArray &line : m_session->command("LIST \"\" " + inside).untagged) {
        if (line.startsWith("LIST"))
            return false;
    }
    m_session->command("UNSELECT");
    return m_session->command("DELETE " + mailbox(folder)).ok;
}

std::optional<MailStore::Folder> ImapStore::findTagged(qint32 subscriptionId)
{
    const QByteArray mark =
        ImapSession::quoted(QStringLiteral("<feed-%1.quillon.invalid>").arg(subscriptionId).toUtf8());
    std::optional<Folder> found;
    for (const Folder &folder : folders()) {
        if (!m_session->command("EXAMINE " + mailbox(folder)).ok)
            continue;
        for (const QByteArray &line : m_session->command("UID SEARCH HEADER List-Id " + mark).untagged) {
            if (line.startsWith("SEARCH ") && line.size() > 7)
                found = folder;
        }
        if (found)
            break;
    }
    m_session->command("UNSELECT");
    return found;
}

bool ImapStore::exists(const Folder &folder)
{
    if (!ensureOpen())
        return false;
    const ImapSession::Answer answer = m_session->command("LIST \"\" " + mailbox(folder));
    for (const QByteArray &line : answer.untagged) {
        if (line.startsWith("LIST") && !line.contains("\\Noselect") && !line.contains("\\NonExistent"))
            return true;
    }
    return false;
}

bool ImapStore::create(const Folder &folder, QString *error)
{
    if (!ensureOpen())
        return false;
    // Every level, so each can be opened; "already exists" is fine.
    for (qsizetype depth = 1; depth <= folder.size(); ++depth) {
        const QByteArray box = mailbox(folder.mid(0, depth));
        m_session->command("CREATE " + box);
        m_session->command("SUBSCRIBE " + box);
    }
    if (!exists(folder)) {
        if (error)
            *error =
                QStringLiteral("The IMAP server did not create %1").arg(QString::fromUtf8(mailbox(folder)));
        return false;
    }
    return true;
}

QList<MailStore::Folder> ImapStore::folders()
{
    QList<Folder> found;
    if (!ensureOpen())
        return found;
    static const QRegularExpression list(QStringLiteral("^LIST \\(([^)]*)\\) \"(.)\" \"?(.*?)\"?$"));
    for (const QByteArray &line : m_session->command("LIST \"\" \"*\"").untagged) {
        const auto m = list.match(QString::fromUtf8(line));
        if (!m.hasMatch() || m.captured(1).contains(QLatin1String("Noselect")) ||
            m.captured(3) == QLatin1String("INBOX"))
            continue;
        found.append(ImapSession::decodeName(m.captured(3).toUtf8()).split(m.captured(2)));
    }
    return found;
}

QList<MailStore::Folder> ImapStore::changedFolders(const QList<Folder> &watched)
{
    QList<Folder> changed;
    if (!ensureOpen())
        return changed;
    // STATUS of the selected mailbox may show this session's stale view.
    m_session->command("UNSELECT");
    for (const Folder &folder : watched) {
        // A new \Seen changes UNSEEN; messages taken or added change MESSAGES.
        const ImapSession::Answer status =
            m_session->command("STATUS " + mailbox(folder) + " (MESSAGES UNSEEN UIDNEXT)");
        const QByteArray stamp = status.untagged.value(0);
        if (m_stamps.value(mailbox(folder)) != stamp)
            changed.append(folder);
        m_stamps.insert(mailbox(folder), stamp);
    }
    return changed;
}

void ImapStore::setRead(const Folder &folder, const QHash<QString, bool> &marks)
{
    QList<QByteArray> seen, unseen;
    const auto found = messages(folder);
    for (auto it = marks.cbegin(); it != marks.cend(); ++it) {
        const auto message = found.constFind(it.key());
        if (message != found.cend() && message->read != it.value())
            (it.value() ? seen : unseen).append(message->uid);
    }
    if (!seen.isEmpty())
        m_session->command("UID STORE " + uidSet(seen) + " +FLAGS.SILENT (\\Seen)");
    if (!unseen.isEmpty())
        m_session->command("UID STORE " + uidSet(unseen) + " -FLAGS.SILENT (\\Seen)");
    m_known.remove(mailbox(folder));
}

QHash<QString, bool> ImapStore::readStates(const Folder &folder)
{
    QHash<QString, bool> states;
    const auto found = messages(folder);
    for (auto it = found.cbegin(); it != found.cend(); ++it)
        states.insert(it.key(), it->read);
    return states;
}
