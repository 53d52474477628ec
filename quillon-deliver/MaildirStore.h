#pragma once

#include "MailStore.h"

#include <QDateTime>
#include <QHash>
#include <QSet>

// A Maildir++ tree: the root is the inbox, a folder {"Feeds", "News"} is the directory
// ".Feeds.News" beside it. Messages are written to tmp/, flushed to disk in one go at
// commit() and only then renamed into new/, so a message is either whole or absent.
class MaildirStore : public MailStore
{
public:
    explicit MaildirStore(QString root) : m_root(std::move(root)) {}

    [[nodiscard]] QString describe() const override { return m_root; }
    // The file listing the roots made here: one made before and gone now is a disk away, to be
    // waited for, not made again on the bare mount point.
    void setRootsRecord(QString path) { m_rootsRecord = std::move(path); }
    [[nodiscard]] bool open(QString *error) override;
    [[nodiscard]] bool reachable() override;
    [[nodiscard]] bool add(const Folder &folder, const QString &key, const QByteArray &message,
                           QString *error) override;
    [[nodiscard]] CommitJob commitJob() override;
    void afterCommit(bool ok) override;
    bool remove(const Folder &folder, const QString &key) override;
    [[nodiscard]] bool move(const Folder &from, const Folder &to, QString *error) override;
    void removeAll(const Folder &folder) override;
    [[nodiscard]] bool exists(const Folder &folder) override;
    [[nodiscard]] bool create(const Folder &folder, QString *error) override;
    [[nodiscard]] QList<Folder> folders() override;
    [[nodiscard]] QList<Folder> changedFolders(const QList<Folder> &watched) override;
    [[nodiscard]] QHash<QString, bool> readStates(const Folder &folder) override;
    void setRead(const Folder &folder, const QHash<QString, bool> &marks) override;
    void tag(const Folder &folder, qint32 subscriptionId) override;
    [[nodiscard]] std::optional<Folder> findTagged(qint32 subscriptionId) override;

    // The directory of a folder.
    [[nodiscard]] QString folderPath(const Folder &folder) const;
    // The message file's name for a key, as written into new/.
    [[nodiscard]] static QString fileName(const QString &key) { return key + QStringLiteral(".quillon"); }

private:
    struct Pending
    {
        QString tmpPath;
        QString newPath;
        QString newDir;
    };
    // Our messages in a folder: key -> path, from cur/ and new/.
    [[nodiscard]] QHash<QString, QString> messages(const QString &dir) const;
    QSet<QString> &knownKeys(const QString &dir);
    // made: whether the folder was new (so nothing of ours is in it).
    [[nodiscard]] bool makeMaildir(const QString &dir, QString *error, bool *made = nullptr) const;
    // The folder and every level above it; trustMade skips those made before.
    [[nodiscard]] bool makeLevels(const Folder &folder, bool trustMade, QString *error);
    [[nodiscard]] QStringList madeRoots() const;
    void rememberRoot() const;
    // One pass of a move; how many of ours are still in source.
    int moveMessages(const QString &source, const QString &target);
    // The folder's directory goes when no message at all is left in it.
    void dropIfEmpty(const QString &dir);
    // A level above a folder goes when it holds neither messages nor other folders; true when gone.
    bool dropIfUnused(const Folder &folder);
    // Rewrites the mail program's configuration when the folders differ from those it lists.
    void listFolders();

    static constexpr int kMovePasses = 3;

    QString m_root;
    QString m_rootsRecord;
    QList<Pending> m_pending;
    QHash<QString, QSet<QString>> m_keys; // by folder directory
    QSet<QString> m_made;                 // folder directories known to be whole Maildirs
    QHash<QString, qint64> m_stamps;      // last seen change stamp, by folder directory
    QStringList m_listed;                 // folder directories the configuration names
    bool m_configWritten = false;
    bool m_unlisted = false; // folders made since the configuration was written
};
