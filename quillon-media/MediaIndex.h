#pragma once

#include <QList>
#include <QString>

// The media consumer's own record of its files: where each enclosure goes (chosen before its
// download starts, so a cut download resumes into the same file) and which are complete.
// Kept as a small JSON file, replaced whole on each change so a crash leaves the old or the
// new one.
class MediaIndex
{
public:
    struct Entry
    {
        qint32 article = 0;
        qint32 subscription = 0;
        QString url;
        QString file;
        bool done = false;
    };

    explicit MediaIndex(QString path) : m_path(std::move(path)) {}

    void load();
    bool save() const; // false (and a log line) when the file cannot be written

    [[nodiscard]] const Entry *find(qint32 article, const QString &url) const;
    [[nodiscard]] bool holdsFile(const QString &file) const;
    void put(const Entry &entry);
    void markDone(qint32 article, const QString &url);
    // Takes the article's entries out and returns them.
    QList<Entry> takeArticle(qint32 article);
    // The subscription's complete files, newest article first.
    [[nodiscard]] QList<Entry> doneOf(qint32 subscription) const;

private:
    QString m_path;
    QList<Entry> m_entries;
};
