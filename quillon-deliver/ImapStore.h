#pragma once

#include "ImapSession.h"
#include "MailStore.h"

#include <QHash>

// An IMAP account as the mail store: folders are mailboxes (made when missing, the root is
// INBOX), messages go in with APPEND, unread. Each message carries "X-Quillon-Key" so that
// one already there is recognised; read marks are the \Seen flags, looked at when a
// mailbox's STATUS changed.
class ImapStore : public MailStore
{
public:
    explicit ImapStore(ImapSession::Account account) : m_account(std::move(account)) {}

    [[nodiscard]] QString describe() const override;
    [[nodiscard]] bool open(QString *error) override;
    [[nodiscard]] bool reachable() override { return ensureOpen(); }
    [[nodiscard]] bool add(const Folder &folder, const QString &key, const QByteArray &message,
                           QString *error) override;
    // APPEND answered OK is stored.
    [[nodiscard]] CommitJob commitJob() override
    {
        return [](QString *) { return true; };
    }
    bool remove(const Folder &folder, const QString &key) override;
    [[nodiscard]] bool move(const Folder &from, const Folder &to, QString *error) override;
    void removeAll(const Folder &folder) override;
    [[nodiscard]] bool exists(const Folder &folder) override;
    [[nodiscard]] bool create(const Folder &folder, QString *error) override;
    [[nodiscard]] QList<Folder> folders() override;
    [[nodiscard]] QList<Folder> changedFolders(const QList<Folder> &watched) override;
    [[nodiscard]] QHash<QString, bool> readStates(const Folder &folder) override;
    void setRead(const Folder &folder, const QHash<QString, bool> &marks) override;
    // Every message names its subscription in List-Id, so a mailbox needs no tag of its own:
    // one renamed in the mail program is found by what it holds.
    void tag(const Folder &, qint32) override {}
    [[nodiscard]] std::optional<Folder> findTagged(qint32 subscriptionId) override;

    // The quoted mailbox name of a folder, for commands.
    [[nodiscard]] QByteArray mailbox(const Folder &folder) const;

private:
    struct Message
    {
        QByteArray uid;
        bool read = false;
    };
    // Our messages of a mailbox by key, read from the server (and selecting it).
    [[nodiscard]] QHash<QString, Message> messages(const Folder &folder);
    [[nodiscard]] bool select(const Folder &folder);
    void expunge(const QList<QByteArray> &uids);
    // The levels of the folder joined by the server's separator, unquoted.
    [[nodiscard]] QByteArray mailboxName(const Folder &folder) const;
    // The mailbox goes when it holds neither messages nor other mailboxes; true when gone.
    bool dropIfUnused(const Folder &folder);
    [[nodiscard]] bool ensureOpen();

    ImapSession::Account m_account;
    std::unique_ptr<ImapSession> m_session;
    QHash<QByteArray, QHash<QString, Message>> m_known; // by mailbox
    QHash<QByteArray, QByteArray> m_stamps;             // STATUS answer, by mailbox
    QString m_lastError;
};
