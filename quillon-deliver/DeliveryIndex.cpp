#include "DeliveryIndex.h"

#include "DeliveryLogging.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QSet>

void DeliveryIndex::load()
{
    m_folders.clear();
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    QJsonParseError error{};
    const QJsonDocument doc = QJsonDocument::fromJson(file.read(16 * 1024 * 1024), &error);
    if (error.error != QJsonParseError::NoError || !doc.isObject()) {
        qCWarning(lcDeliver) << "the delivery index" << m_path << "cannot be read:" << error.errorString()
                             << "- starting afresh";
        file.close();
        QFile::rename(m_path, m_path + QStringLiteral(".unreadable"));
        return;
    }
    const QJsonObject folders = doc.object().value(QStringLiteral("folders")).toObject();
    for (auto it = folders.begin(); it != folders.end(); ++it) {
        const qint32 id = it.key().toInt();
        if (id > 0 && it.value().isArray())
            m_folders.insert(id, it.value().toVariant().toStringList());
    }
}

bool DeliveryIndex::save()
{
    if (!m_dirty)
        return true;
    QJsonObject folders;
    for (auto it = m_folders.cbegin(); it != m_folders.cend(); ++it)
        folders.insert(QString::number(it.key()), QJsonArray::fromStringList(it.value()));
    QDir().mkpath(QFileInfo(m_path).absolutePath());
    QSaveFile file(m_path);
    if (!file.open(QIODevice::WriteOnly) ||
        file.write(QJsonDocument(QJsonObject{{QStringLiteral("folders"), folders}}).toJson()) < 0 ||
        !file.commit()) {
        qCWarning(lcDeliver) << "cannot write the delivery index" << m_path;
        return false;
    }
    m_dirty = false;
    return true;
}

std::optional<DeliveryIndex::Folder> DeliveryIndex::folderOf(qint32 subscriptionId) const
{
    const auto it = m_folders.constFind(subscriptionId);
    return it == m_folders.cend() ? std::nullopt : std::optional<Folder>(*it);
}

void DeliveryIndex::setFolder(qint32 subscriptionId, const Folder &folder)
{
    const auto it = m_folders.constFind(subscriptionId);
    if (it != m_folders.cend() && *it == folder)
        return;
    m_folders.insert(subscriptionId, folder);
    m_dirty = true;
}

void DeliveryIndex::forget(qint32 subscriptionId)
{
    m_dirty = m_folders.remove(subscriptionId) > 0 || m_dirty;
}

QList<DeliveryIndex::Folder> DeliveryIndex::folders() const
{
    // Asked for every second: a look-up per folder, not a pass over those already taken.
    QList<Folder> all;
    QSet<Folder> seen;
    for (const Folder &folder : m_folders) {
        if (!seen.contains(folder)) {
            seen.insert(folder);
            all.append(folder);
        }
    }
    return all;
}
