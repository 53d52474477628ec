#pragma once

#include <QString>

// Where downloads are filed: the user's XDG Music, Videos and Pictures folders (user-dirs.dirs,
// as Qt reads it), and a downloads folder under the user's data folder for everything else.
struct MediaFolders
{
    QString music;
    QString videos;
    QString pictures;
    QString downloads;
    QString playlists;

    // The folders of the user running the program.
    [[nodiscard]] static MediaFolders fromSystem();
};
