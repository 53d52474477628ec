#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace quillon {

// Where the feed readers of Unix desktops keep their files, found the way those readers find
// them (the XDG base directories, else the home folder), and how much of such a file we read.
class ReaderFiles
{
public:
    // $XDG_CONFIG_HOME, else ~/.config.
    [[nodiscard]] static QString configHome();
    // $XDG_DATA_HOME, else ~/.local/share.
    [[nodiscard]] static QString dataHome();
    [[nodiscard]] static QString home();
    // The first of paths that is a readable file, else an empty string.
    [[nodiscard]] static QString firstExisting(const QStringList &paths);
    // The file's bytes, at most kMaxBytes of them; empty when it cannot be read.
    [[nodiscard]] static QByteArray read(const QString &path);

    static constexpr qint64 kMaxBytes = 32 * 1024 * 1024;

private:
    [[nodiscard]] static QString xdgFolder(const char *variable, const QString &fallback);
};

} // namespace quillon
