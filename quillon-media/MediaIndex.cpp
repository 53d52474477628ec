#include "MediaIndex.h"

#include "MediaLogging.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <filesystem>

void MediaIndex::load()
{
    m_entries.clear();
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    if (error.error != QJsonParseError::NoError) {
        qCWarning(lcMedia) << "download index" << m_path << "unreadable:" << error.errorString();
        return;
    }
    for (const QJsonValue &value : document.array()) {
        const QJsonObject o = value.toObject();
        Entry entry{o.value(QLatin1String("article")).toInt(), o.value(QLatin1String("subscription")).toInt(),
                    o.value(QLatin1String("url")).toString(), o.value(QLatin1String("file")).toString(),
                    o.value(QLatin1String("done")).toBool()};
        if (entry.article > 0 && !entry.file.isEmpty())
            m_entries.append(entry);
    }
}

bool MediaIndex::save() const
{
    QJsonArray array;
    for (const Entry &e : m_entries)
        array.append(QJsonObject{{QStringLiteral("article"), e.article},
                                 {QStringLiteral("subscription"), e.subscription},
                                 {QStringLiteral("url"), e.url},
                                 {QStringLiteral("file"), e.file},
                                 {QStringLiteral("done"), e.done}});
    QDir().mkpath(QFileInfo(m_path).absolutePath());
    // Written beside and renamed over, without waiting for the disk: the index changes for
    // every file, and a killed program loses nothing the system has been given.
    const QString temporary = m_path + QStringLiteral(".new");
    QFile file(temporary);
    const QByteArray bytes = QJsonDocument(array).toJson(QJsonDocument::Compact);
    bool ok = file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
    file.close();
    std::error_code error;
    if (ok)
        std::filesystem::rename(QFile::encodeName(temporary).toStdString(),
                                QFile::encodeName(m_path).toStdString(), error);
    if (!ok || error) {
        qCWarning(lcMedia) << "cannot write the download index" << m_path << file.errorString();
        return false;
    }
    return true;
}

const MediaIndex::Entry *MediaIndex::find(qint32 article, const QString &url) const
{
    const auto it = std::find_if(m_entries.cbegin(), m_entries.cend(),
                                 [&](const Entry &e) { return e.article == article && e.url == url; });
    return it == m_entries.cend() ? nullptr : &*it;
}

bool MediaIndex::holdsFile(const QString &file) const
{
    return std::any_of(m_entries.cbegin(), m_entries.cend(), [&](const Entry &e) { return e.file == file; });
}

void MediaIndex::put(const Entry &entry)
{
    for (Entry &e : m_entries) {
        if (e.article == entry.article && e.url == entry.url) {
            e = entry;
            return;
        }
    }
    m_entries.append(entry);
}

void MediaIndex::markDone(qint32 article, const QString &url)
{
    for (Entry &e : m_entries) {
        if (e.article == article && e.url == url)
            e.done = true;
    }
}

QList<MediaIndex::Entry> MediaIndex::takeArticle(qint32 article)
{
    QList<Entry> taken;
    m_entries.removeIf([&](const Entry &e) {
        if (e.article != article)
            return false;
        taken.append(e);
        return true;
    });
    return taken;
}

QList<MediaIndex::Entry> MediaIndex::doneOf(qint32 subscription) const
{
    QList<Entry> done;
    for (const Entry &e : m_entries) {
        if (e.subscription == subscription && e.done)
            done.append(e);
    }
    std::sort(done.begin(), done.end(), [](const Entry &a, const Entry &b) { return a.article > b.article; });
    return done;
}
