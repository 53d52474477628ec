#include "EngineLogPlace.h"

#include "PrivateFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace quillon {

QString EngineLogPlace::stateFile()
{
    QString state = qEnvironmentVariable("XDG_STATE_HOME");
    if (!QDir::isAbsolutePath(state))
        state = QDir::homePath() + QStringLiteral("/.local/state");
    return state + QStringLiteral("/quillon-engine/engine.log");
}

QString EngineLogPlace::adopt(const QString &earlierFolder)
{
    const QString target = stateFile();
    const QString earlier = QDir(earlierFolder).filePath(QStringLiteral("engine.log"));
    if (!PrivateFiles::makePrivateFolder(QFileInfo(target).path()))
        return earlier;
    if (QFileInfo::exists(earlier) && !QFileInfo::exists(target) && !QFile::rename(earlier, target))
        return earlier;
    return target;
}

} // namespace quillon
