#pragma once

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

// A home folder of its own whose user-dirs.dirs names Music, Videos and Pictures folders with
// other names than the usual ones, so filing by the XDG rules shows.
class MediaHome
{
public:
    MediaHome()
    {
        qputenv("HOME", m_dir.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", m_dir.filePath(".config").toUtf8());
        qputenv("XDG_DATA_HOME", m_dir.filePath(".local/share").toUtf8());
        QDir(m_dir.path()).mkpath(".config");
        QFile dirs(m_dir.filePath(".config/user-dirs.dirs"));
        if (dirs.open(QIODevice::WriteOnly))
            dirs.write("XDG_MUSIC_DIR=\"$HOME/Tunes\"\nXDG_VIDEOS_DIR=\"$HOME/Films\"\n"
                       "XDG_PICTURES_DIR=\"$HOME/Photos\"\n");
    }

    [[nodiscard]] QString path(const QString &relative) const { return m_dir.filePath(relative); }

private:
    QTemporaryDir m_dir;
};
