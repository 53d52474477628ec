#pragma once

#include "EngineError.h"
#include "PropertyBag.h"

#include <QDateTime>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

namespace quillon {

class EngineCorePrivate;
class FeedFetcher;
class SecretKeyring;

// The engine itself: subscriptions, bindings, settings, log and the consumers connected to it,
// kept in SQLite below a data folder. Transports open one session per client and run the
// client's operations through call(). Everything runs on the thread that owns the core.
class EngineCore : public QObject
{
    Q_OBJECT
public:
    using SessionId = qint32;
    // Called when the engine sends a message to a callback of the session; may be called
    // inside call(), so a transport must defer delivery to its event loop.
    using MessageSink = std::function<void(qint32 callbackId, const BagPtr &message)>;

    // dataFolder holds the database; it is created when missing.
    explicit EngineCore(const QString &dataFolder, QObject *parent = nullptr);
    ~EngineCore() override;

    // Opens (creating or migrating) the store. Returns false with a reason on failure.
    [[nodiscard]] bool open(QString *error = nullptr);
    [[nodiscard]] QString databasePath() const;

    SessionId openSession(MessageSink sink);
    void closeSession(SessionId session);

    // Runs one client operation by its name (Connect, RemoveItem, BindItem, ...; see
    // docs/PROTOCOL.md). Throws EngineError when the operation fails.
    PropertyValue call(SessionId session, const QString &operation, const QList<PropertyValue> &args);

    // Tells every connected consumer "EngineTerminated"; the core stays usable.
    void announceTermination();

    // The consumer ID of every connected session, in the order they were opened.
    [[nodiscard]] QStringList connectedConsumers() const;

    // Where "quillon-data:" addresses and the shipped search sources are found; by default
    // the folder "QuillonData" beside the program.
    void setQuillonDataFolder(const QString &folder);
    [[nodiscard]] QString quillonDataFolder() const;
    // The log's text file, from the next open() on; by default engine.log in the data folder.
    void setLogFile(const QString &path);
    // Replaces the fetcher, before anything is fetched (tests).
    void setFeedFetcher(std::unique_ptr<FeedFetcher> fetcher);
    // Keeps passwords in this keyring from the next open() on, the database holding only a
    // marker for each; without one they stay in the private database.
    void setSecretKeyring(std::unique_ptr<SecretKeyring> keyring);
    // Replaces the clock that schedules and dates everything (tests).
    void setClock(std::function<QDateTime()> clock);

    // From now on every subscription is fetched when it is due. Until then the engine fetches
    // only what a request asks for, so an embedded core stays quiet.
    void startUpdating();
    // Fetches every subscription due by the clock now, started or not.
    void runDueUpdates();

Q_SIGNALS:
    // A subscription's update ended, with the status it left in LASTUPDATESTATUS.
    void subscriptionUpdated(qint32 subscriptionId, const QString &status);

private:
    std::unique_ptr<EngineCorePrivate> d;
};

} // namespace quillon
