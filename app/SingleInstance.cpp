#include "SingleInstance.h"

#include "EngineSocketName.h"

#include <QDir>
#include <QLockFile>

#include <memory>

namespace {
std::unique_ptr<QLockFile> &lock()
{
    static std::unique_ptr<QLockFile> instance;
    return instance;
}
} // namespace

QString SingleInstance::LockPath()
{
    const QString configured = qEnvironmentVariable("CONFIGCONSUMER_LOCK");
    if (!configured.isEmpty())
        return configured;
    // In the user's private folder: in the shared temp folder another user could hold the name.
    QString folder = quillon::PrivateRuntimeFolder();
    if (folder.isEmpty())
        folder = QDir::tempPath();
    return QDir(folder).filePath(QStringLiteral("configconsumer.lock"));
}

bool SingleInstance::AnotherInstanceRunning()
{
    if (lock())
        return false;
    auto candidate = std::make_unique<QLockFile>(LockPath());
    // A lock left by a process that died is taken over, so a crash never blocks the next start.
    candidate->setStaleLockTime(0);
    if (!candidate->tryLock(0))
        return true;
    lock() = std::move(candidate);
    return false;
}

void SingleInstance::Release()
{
    lock().reset();
}
