#pragma once

#include "MediaChoices.h"
#include "MediaFolders.h"

#include <QString>

#include <functional>

// Where a downloaded enclosure goes: the folder by its kind and the settings, the
// subscription's sub-folder, and a file name that is safe on every file system.
class MediaPlacement
{
public:
    enum class Kind { Music, Video, Picture, Other };

    // By MIME type first, else by the address's extension.
    [[nodiscard]] static Kind kindOf(const QString &type, const QString &url);
    [[nodiscard]] static QString folderFor(Kind kind, const MediaChoices &choices,
                                           const MediaFolders &folders, const QString &subscriptionTitle);
    // The last path segment of the address, else the title, with a fitting extension; no
    // separators, control characters, leading dots or reserved device names.
    [[nodiscard]] static QString fileName(const QString &url, const QString &title, const QString &type);
    // A name usable as one folder level ("Untitled" when nothing is left).
    [[nodiscard]] static QString safeName(const QString &text);
    // name in folder, or "stem (2).ext", "stem (3).ext"... when taken and not to be overwritten.
    [[nodiscard]] static QString freePath(const QString &folder, const QString &name, bool overwrite,
                                          const std::function<bool(const QString &)> &taken);
};
