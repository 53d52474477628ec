#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

// Where delivered messages live: folders named from the store's root down, each message
// under a key of ours ("a" and the engine's article ID). Messages arrive unread.
class MailStore
{
public:
    using Folder = QStringList;

    virtual ~MailStore() = default;

    // Where the store is, for the log and the user.
    [[nodiscard]] virtual QString describe() const = 0;
    [[nodiscard]] virtual bool open(QString *error) = 0;
    // False while the store as a whole is away (a disk not mounted, a server down): an
    // outage to wait out, never a sign that its folders were deleted.
    [[nodiscard]] virtual bool reachable() = 0;

    // Adds the message unless one with the key is in the folder already (then true as well).
    // It is safe only once commit() returned true.
    [[nodiscard]] virtual bool add(const Folder &folder, const QString &key, const QByteArray &message,
                                   QString *error) = 0;
    [[nodiscard]] bool commit(QString *error)
    {
        const bool ok = commitJob()(error);
        afterCommit(ok);
        return ok;
    }
    // commit() in two steps, so that waiting for the disk can go on beside the next batch: the
    // job touches files only and may run on any thread; afterCommit(ok) follows on the store's.
    using CommitJob = std::function<bool(QString *error)>;
    [[nodiscard]] virtual CommitJob commitJob() = 0;
    virtual void afterCommit(bool /*ok*/) {}
    // Removing what is not there succeeds.
    virtual bool remove(const Folder &folder, const QString &key) = 0;
    // Every message of ours goes from one folder to the other, with its read mark; the old
    // folder goes when empty, and so does each level above it that is left with nothing in it.
    [[nodiscard]] virtual bool move(const Folder &from, const Folder &to, QString *error) = 0;
    // Every message of ours in the folder goes; the folder too when nothing else is left, and
    // the levels above it that are left empty.
    virtual void removeAll(const Folder &folder) = 0;

    [[nodiscard]] virtual bool exists(const Folder &folder) = 0;
    [[nodiscard]] virtual bool create(const Folder &folder, QString *error) = 0;
    [[nodiscard]] virtual QList<Folder> folders() = 0;
    // Folders whose messages may have changed since the last call (all of them the first time).
    [[nodiscard]] virtual QList<Folder> changedFolders(const QList<Folder> &watched) = 0;
    // Read mark of every message of ours in the folder, by key.
    [[nodiscard]] virtual QHash<QString, bool> readStates(const Folder &folder) = 0;
    // Sets the read mark of these messages of ours, by key; keys not in the folder are skipped.
    virtual void setRead(const Folder &folder, const QHash<QString, bool> &marks) = 0;

    // Marks a folder as the subscription's, so it can be found after the user moved it.
    virtual void tag(const Folder &folder, qint32 subscriptionId) = 0;
    [[nodiscard]] virtual std::optional<Folder> findTagged(qint32 subscriptionId) = 0;

    [[nodiscard]] static QString keyOf(qint32 articleId) { return QStringLiteral("a%1").arg(articleId); }
    // 0 when the key is not one of ours.
    [[nodiscard]] static qint32 articleOf(const QString &key)
    {
        bool ok = false;
        const qint32 id = key.startsWith(QLatin1Char('a')) ? key.mid(1).toInt(&ok) : 0;
        return ok && id > 0 ? id : 0;
    }

protected:
    // Offers drop each level above folder, deepest first, up to the first one that keep lies
    // in too; stops at the first level drop keeps (it holds messages or other folders).
    static void dropEmptyParents(const Folder &folder, const Folder &keep,
                                 const std::function<bool(const Folder &parent)> &drop)
    {
        for (qsizetype depth = folder.size() - 1; depth > 0; --depth) {
            const Folder parent = folder.mid(0, depth);
            if (keep.mid(0, depth) == parent || !drop(parent))
                return;
        }
    }
};
