#include "ReaderFiles.h"

#include "CoreLogging.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace quillon {

QString ReaderFiles::home()
{
    return QDir::homePath();
}

QString ReaderFiles::configHome()
{
    return xdgFolder("XDG_CONFIG_HOME", home() + QStringLiteral("/.config"));
}

QString ReaderFiles::dataHome()
{
    return xdgFolder("XDG_DATA_HOME", home() + QStringLiteral("/.local/share"));
}

// The base directory rules ignore a relative value.
QString ReaderFiles::xdgFolder(const char *variable, const QString &fallback)
{
    const QString value = qEnvironmentVariable(variable);
    return QDir::isAbsolutePath(value) ? value : fallback;
}

QString ReaderFiles::firstExisting(const QStringList &paths)
{
    for (const QString &path : paths) {
        const QFileInfo info(path);
        if (info.isFile() && info.isReadable())
            return path;
    }
    return {};
}

QByteArray ReaderFiles::read(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qCInfo(lcCore).noquote() << "cannot read" << path << "-" << file.errorString();
        return {};
    }
    if (file.size() > kMaxBytes)
        qCInfo(lcCore).noquote() << "reading only the first" << kMaxBytes << "bytes of" << path;
    return file.read(kMaxBytes);
}

} // namespace quillon
