#include "MediaFolders.h"

#include <QDir>
#include <QStandardPaths>

MediaFolders MediaFolders::fromSystem()
{
    MediaFolders folders;
    folders.music = QStandardPaths::writableLocation(QStandardPaths::MusicLocation);
    folders.videos = QStandardPaths::writableLocation(QStandardPaths::MoviesLocation);
    folders.pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    const QDir data(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation));
    folders.downloads = data.filePath(QStringLiteral("Corvell/Downloads"));
    // Players look for playlists beside the music.
    folders.playlists = QDir(folders.music).filePath(QStringLiteral("Playlists"));
    return folders;
}
