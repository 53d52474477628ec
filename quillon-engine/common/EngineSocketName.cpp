#include "EngineSocketName.h"

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

QString EngineSocketName()
{
    const QString configured = qEnvironmentVariable("QUILLON_ENGINE_SOCKET");
    if (!configured.isEmpty())
        return configured;
    return QStringLiteral("quillon-engine-") + sanitised(loginName());
}

} // namespace quillon
