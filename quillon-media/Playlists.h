#pragma once

#include <QList>
#include <QString>

// A playlist kept as two files side by side, "<name>.m3u" and "<name>.xspf", each listing the
// downloads in the order they were added.
class Playlists
{
public:
    struct Track
    {
        QString file;
        QString title;
    };

    explicit Playlists(QString folder) : m_folder(std::move(folder)) {}

    // Adds the file to the named playlist unless it is listed already; false when a file
    // cannot be written.
    bool append(const QString &name, const Track &track);
    // Takes a file out of every playlist that lists it.
    void remove(const QString &file);

    // The tracks of an XSPF playlist, in order (empty when the file is missing or unreadable).
    [[nodiscard]] static QList<Track> readXspf(const QString &path);
    [[nodiscard]] static QList<Track> readM3u(const QString &path);

private:
    bool write(const QString &name, const QList<Track> &tracks) const;

    QString m_folder;
};
