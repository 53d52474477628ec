#include "EngineCore.h"

#include "CoreLogging.h"
#include "EngineCorePrivate.h"
#include "EngineMessages.h"
#include "FeedFetcher.h"

#include <QDir>

Q_LOGGING_CATEGORY(lcCore, "corvell.quillon.engine.core")

namespace quillon {

EngineCore::EngineCore(const QString &dataFolder, QObject *parent)
    : QObject(parent), d(std::make_unique<EngineCorePrivate>(dataFolder))
{
    d->updated = [this](qint32 id, const QString &status) { Q_EMIT subscriptionUpdated(id, status); };
}

EngineCore::~EngineCore() = default;

bool EngineCore::open(QString *error)
{
    try {
        d->open();
        return true;
    } catch (const std::exception &e) {
        const QString reason = QString::fromLocal8Bit(e.what());
        qCWarning(lcCore).noquote() << "engine store did not open:" << reason;
        if (error)
            *error = reason;
        return false;
    }
}

QString EngineCore::databasePath() const
{
    return QDir(d->dataFolder).filePath(QStringLiteral("engine.sqlite"));
}

EngineCore::SessionId EngineCore::openSession(MessageSink sink)
{
    return d->sessions.open(std::move(sink));
}

void EngineCore::closeSession(SessionId session)
{
    const QString consumer = d->sessions.close(session);
    if (!consumer.isEmpty())
        qCInfo(lcCore) << "consumer disconnected:" << consumer;
}

PropertyValue EngineCore::call(SessionId session, const QString &operation, const QList<PropertyValue> &args)
{
    return d->call(session, operation, args);
}

void EngineCore::announceTermination()
{
    d->sessions.broadcast(EngineMessages::message(QStringLiteral("EngineTerminated")));
}

QStringList EngineCore::connectedConsumers() const
{
    return d->sessions.connectedConsumers();
}

void EngineCore::setQuillonDataFolder(const QString &folder)
{
    d->resolver.setDataFolder(folder);
}

QString EngineCore::quillonDataFolder() const
{
    return d->resolver.dataFolder();
}

void EngineCore::setLogFile(const QString &path)
{
    d->logFile = path;
}

void EngineCore::setFeedFetcher(std::unique_ptr<FeedFetcher> fetcher)
{
    d->fetcher = std::move(fetcher);
    if (d->fetcher)
        d->fetcher->setPolicy(d->policy);
}

void EngineCore::setSecretKeyring(std::unique_ptr<SecretKeyring> keyring)
{
    d->keyring = std::move(keyring);
}

void EngineCore::setClock(std::function<QDateTime()> clock)
{
    d->now = std::move(clock);
}

void EngineCore::startUpdating()
{
    d->startUpdating();
}

void EngineCore::runDueUpdates()
{
    d->runDueUpdates();
}

} // namespace quillon
