#pragma once

#include "MailStore.h"

#include <QMap>

#include <optional>

// Which folder of the mail store holds each subscription's delivered messages, kept in a
// small JSON file so a changed setting or a restart knows where the messages are.
class DeliveryIndex
{
public:
    using Folder = MailStore::Folder;

    explicit DeliveryIndex(QString path) : m_path(std::move(path)) {}

    // A missing file is an empty index; an unreadable one is set aside and logged.
    void load();
    // Writes the file when something changed; false when it cannot be written.
    bool save();

    [[nodiscard]] std::optional<Folder> folderOf(qint32 subscriptionId) const;
    void setFolder(qint32 subscriptionId, const Folder &folder);
    void forget(qint32 subscriptionId);
    [[nodiscard]] QList<qint32> subscriptions() const { return m_folders.keys(); }
    // Each folder once.
    [[nodiscard]] QList<Folder> folders() const;

private:
    QString m_path;
    QMap<qint32, Folder> m_folders;
    bool m_dirty = false;
};
