#include "EngineSocketName.h"

#include "PrivateFiles.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#ifdef Q_OS_UNIX
#include <pwd.h>
#include <unistd.h>
#endif

namespace quillon {

namespace {

QString loginName()
{
#ifdef Q_OS_UNIX
    // The account, not $USER: a daemon started by a service manager may have no environment.
    if (const passwd *entry = ::getpwuid(::getuid()); entry && entry->pw_name)
        return QString::fromLocal8Bit(entry->pw_name);
#endif
    for (const char *variable : {"USERNAME", "USER", "LOGNAME"}) {
        const QString value = qEnvironmentVariable(variable);
        if (!value.isEmpty())
            return value;
    }
    return QString();
}

// Socket names become file names or pipe names: keep only characters that are safe in both.
QString sanitised(const QString &name)
{
    QString result;
    result.reserve(name.size());
    for (const QChar c : name) {
        const bool safe = (c.isLetterOrNumber() && c.unicode() < 128) || c == u'-' || c == u'_' || c == u'.';
        result.append(safe ? c : QChar(u'_'));
    }
    return result.isEmpty() ? QStringLiteral("user") : result;
}

} // namespace

QString PrivateRuntimeFolder(QString *error)
{
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (!runtime.isEmpty() && PrivateFiles::isPrivateFolder(runtime))
        return QDir::cleanPath(runtime);
    // No trusted runtime folder (a plain su session, macOS): the home folder is ours alone.
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    const QString fallback =
        QDir(cache.isEmpty() ? QDir::homePath() : cache).filePath(QStringLiteral("quillon-engine"));
    if (PrivateFiles::makePrivateFolder(fallback))
        return fallback;
    if (error)
        *error = QStringLiteral("no private folder for the engine's socket: %1 is not ours or not 0700")
                     .arg(fallback);
    return QString();
}

QString EngineSocketPath(const QString &name)
{
#ifdef Q_OS_WIN
    return name;
#else
    if (QFileInfo(name).isAbsolute())
        return name;
    const QString folder = PrivateRuntimeFolder();
    // Without a private folder the name still works; the peer checks on both ends then guard it.
    return folder.isEmpty() ? QDir(QDir::tempPath()).filePath(name) : QDir(folder).filePath(name);
#endif
}

QString EngineSocketName()
{
    QString name = qEnvironmentVariable("QUILLON_ENGINE_SOCKET");
    if (name.isEmpty())
        name = QStringLiteral("quillon-engine-") + sanitised(loginName());
    return EngineSocketPath(name);
}

} // namespace quillon
