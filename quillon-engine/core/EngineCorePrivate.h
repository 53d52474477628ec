#pragma once

#include "AddressResolver.h"
#include "ArticleStore.h"
#include "BindingStore.h"
#include "CatalogRequests.h"
#include "DeliveryRequests.h"
#include "DeliveryStore.h"
#include "DesktopRequests.h"
#include "DocumentRequests.h"
#include "EngineCore.h"
#include "EngineDatabase.h"
#include "EngineDefaults.h"
#include "EngineLog.h"
#include "EngineMessenger.h"
#include "FeedFetcher.h"
#include "FeedScheduler.h"
#include "FeedUpdater.h"
#include "FetchPolicy.h"
#include "OnlineSync.h"
#include "OperationArguments.h"
#include "Outbox.h"
#include "ReaderImporterRegistry.h"
#include "RequestProcessor.h"
#include "SecretKeyring.h"
#include "SecretVault.h"
#include "SessionTable.h"
#include "SettingsFollower.h"
#include "SettingsStore.h"
#include "SubscriptionChanges.h"
#include "SubscriptionStore.h"

#include <QHash>

#include <functional>
#include <memory>

namespace quillon {

// The state behind EngineCore and one handler per engine operation.
class EngineCorePrivate
{
public:
    using SessionId = EngineCore::SessionId;

    explicit EngineCorePrivate(QString dataFolder);
    ~EngineCorePrivate();

    void open();
    PropertyValue call(SessionId session, const QString &operation, const QList<PropertyValue> &args);
    void startUpdating();
    void runDueUpdates();

    QString dataFolder;
    QString logFile; // empty: engine.log in the data folder
    SessionTable sessions;
    std::function<QDateTime()> now = [] { return QDateTime::currentDateTimeUtc(); };
    AddressResolver resolver;
    ReaderImporterRegistry importers = ReaderImporterRegistry::withKnownReaders();
    // Components hold a reference to this pointer, so the fetcher can be replaced (tests).
    std::unique_ptr<FeedFetcher> fetcher;
    // What the settings ask of every fetch; handed to whichever fetcher is in place.
    std::shared_ptr<FetchPolicy> policy = std::make_shared<FetchPolicy>();
    // Taken by the vault when the store opens.
    std::unique_ptr<SecretKeyring> keyring;
    // Told of every finished update (the core's signal).
    std::function<void(qint32 subscriptionId, const QString &status)> updated;

private:
    struct Call
    {
        SessionId session;
        const OperationArguments &args;
    };
    using Handler = PropertyValue (EngineCorePrivate::*)(const Call &);
    struct Operation
    {
        int argumentCount;
        Handler handler;
        bool writes = true;
    };

    PropertyValue callHandler(const Operation &operation, const Call &call);
    static void requireNewsClass(const QString &itemClass);

    PropertyValue connect(const Call &call);
    PropertyValue removeItem(const Call &call);
    PropertyValue bindItem(const Call &call);
    PropertyValue createItemRequest(const Call &call);
    PropertyValue listConsumerItems(const Call &call);
    PropertyValue getItemBag(const Call &call);
    PropertyValue getItemBags(const Call &call);
    PropertyValue listReaderSubscriptions(const Call &call);
    PropertyValue updateItem(const Call &call);
    PropertyValue requestPreview(const Call &call);
    PropertyValue getSettings(const Call &call);
    PropertyValue setSettings(const Call &call);
    PropertyValue log(const Call &call);
    PropertyValue submitRequest(const Call &call);
    PropertyValue setSyncSettings(const Call &call);
    PropertyValue getSyncSettings(const Call &call);
    PropertyValue syncNow(const Call &call);
    PropertyValue bagToText(const Call &call);
    PropertyValue proxyForUrl(const Call &call);

    static const QHash<QString, Operation> &operations();
    void openVault(EngineDatabase &db);
    void createFetching();
    [[nodiscard]] EngineMessenger messenger();
    void updateFinished(const FeedStoreWorker::Outcome &outcome);
    void syncApplied(const SyncJournal::Applied &applied);

    std::unique_ptr<EngineDatabase> m_db;
    std::unique_ptr<SubscriptionStore> m_subscriptions;
    std::unique_ptr<BindingStore> m_bindings;
    std::unique_ptr<SettingsStore> m_settings;
    std::unique_ptr<EngineLog> m_log;
    std::unique_ptr<RequestProcessor> m_requests;
    std::unique_ptr<ArticleStore> m_articles;
    std::unique_ptr<EngineDefaults> m_defaults;
    std::unique_ptr<CatalogRequests> m_catalog;
    std::unique_ptr<DocumentRequests> m_documents;
    std::unique_ptr<DeliveryStore> m_deliveryStore;
    std::unique_ptr<SubscriptionChanges> m_changes;
    std::unique_ptr<DeliveryRequests> m_delivery;
    std::unique_ptr<DesktopRequests> m_desktop;
    std::unique_ptr<FeedUpdater> m_updater;
    std::unique_ptr<FeedScheduler> m_scheduler;
    std::unique_ptr<SecretVault> m_vault;
    std::unique_ptr<SettingsFollower> m_follower;
    std::unique_ptr<OnlineSync> m_sync;
    Outbox m_outbox;
    qint32 m_lastRequest = 0;
    int m_callDepth = 0;
    bool m_updating = false;
};

} // namespace quillon
