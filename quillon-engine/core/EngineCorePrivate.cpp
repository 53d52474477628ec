#include "EngineCorePrivate.h"

#include "BagText.h"
#include "BindingRule.h"
#include "CoreLogging.h"
#include "DiscoveringFetcher.h"
#include "EngineError.h"
#include "EngineMessages.h"
#include "GeneralSettingKeys.h"
#include "HttpFeedFetcher.h"
#include "ItemClass.h"
#include "OutlineBags.h"
#include "PrivateFiles.h"
#include "ShippedData.h"
#include "SqlTransaction.h"
#include "SyncSettings.h"

#include <QDir>

namespace quillon {

namespace {
QString programDataFolder()
{
    return ShippedDataFolder();
}

// Operations run one at a time; this marks the stretch in which messages wait for the commit.
class CallDepth
{
public:
    explicit CallDepth(int &depth) : m_depth(depth) { ++m_depth; }
    ~CallDepth() { --m_depth; }
    CallDepth(const CallDepth &) = delete;
    CallDepth &operator=(const CallDepth &) = delete;

private:
    int &m_depth;
};
} // namespace

EngineCorePrivate::EngineCorePrivate(QString folder)
    : dataFolder(std::move(folder)), resolver(programDataFolder(), dataFolder)
{
}

EngineCorePrivate::~EngineCorePrivate()
{
    // Whatever answers later goes first, while the stores it writes to still exist.
    m_sync.reset();
    m_scheduler.reset();
    m_updater.reset();
    m_documents.reset();
    fetcher.reset();
}

const QHash<QString, EngineCorePrivate::Operation> &EngineCorePrivate::operations()
{
    using P = EngineCorePrivate;
    static const QHash<QString, Operation> table = {
        {QStringLiteral("Connect"), {2, &P::connect, false}},
        {QStringLiteral("RemoveItem"), {3, &P::removeItem}},
        {QStringLiteral("BindItem"), {4, &P::bindItem}},
        {QStringLiteral("CreateItemRequest"), {3, &P::createItemRequest, false}},
        {QStringLiteral("ListConsumerItems"), {2, &P::listConsumerItems, false}},
        {QStringLiteral("GetItemBag"), {3, &P::getItemBag, false}},
        {QStringLiteral("GetItemBags"), {2, &P::getItemBags, false}},
        {QStringLiteral("ListReaderSubscriptions"), {1, &P::listReaderSubscriptions, false}},
        {QStringLiteral("UpdateItem"), {3, &P::updateItem}},
        {QStringLiteral("RequestPreview"), {3, &P::requestPreview, false}},
        {QStringLiteral("GetSettings"), {3, &P::getSettings, false}},
        {QStringLiteral("SetSettings"), {3, &P::setSettings}},
        {QStringLiteral("Log"), {2, &P::log}},
        {QStringLiteral("SubmitRequest"), {2, &P::submitRequest}},
        {QStringLiteral("SetSyncSettings"), {5, &P::setSyncSettings}},
        {QStringLiteral("GetSyncSettings"), {0, &P::getSyncSettings, false}},
        {QStringLiteral("SyncNow"), {0, &P::syncNow}},
        {QStringLiteral("BagToText"), {1, &P::bagToText, false}},
        {QStringLiteral("ProxyForUrl"), {1, &P::proxyForUrl, false}},
    };
    return table;
}

void EngineCorePrivate::open()
{
    if (m_db && m_db->isOpen())
        return;
    if (!QDir().mkpath(dataFolder))
        throw EngineError(QStringLiteral("Cannot create the engine's data folder %1").arg(dataFolder));
    // The database holds passwords: nobody else may read it, nor what older versions left open.
    PrivateFiles::tightenTree(dataFolder);
    const QDir folder(dataFolder);
    PrivateFiles::createPrivateFile(folder.filePath(QStringLiteral("engine.sqlite")));
    auto db = std::make_unique<EngineDatabase>(folder.filePath(QStringLiteral("engine.sqlite")));
    db->open();
    m_subscriptions = std::make_unique<SubscriptionStore>(*db);
    m_subscriptions->moveLoginsOutOfAddresses();
    m_bindings = std::make_unique<BindingStore>(*db);
    m_settings = std::make_unique<SettingsStore>(*db);
    openVault(*db);
    m_log = std::make_unique<EngineLog>(*db, logFile.isEmpty() ? folder.filePath(QStringLiteral("engine.log"))
                                                               : logFile);
    m_requests = std::make_unique<RequestProcessor>(*m_subscriptions, *m_bindings, m_outbox);
    m_desktop =
        std::make_unique<DesktopRequests>(*m_requests, *m_subscriptions, *m_settings, sessions, m_outbox);
    m_desktop->registerWith(*m_requests);
    m_articles = std::make_unique<ArticleStore>(*db);
    m_defaults = std::make_unique<EngineDefaults>(*m_settings);
    m_defaults->seed();
    m_follower =
        std::make_unique<SettingsFollower>(*m_settings, *m_defaults, *m_subscriptions, *m_log, *policy);
    m_follower->readAll();
    m_db = std::move(db);
    createFetching();
}

void EngineCorePrivate::openVault(EngineDatabase &db)
{
    m_vault = std::make_unique<SecretVault>(db, std::move(keyring));
    QString error;
    if (!m_vault->load(&error)) {
        qCWarning(lcCore,
                  "The passwords in the desktop keyring cannot be read (%s); new ones stay in the "
                  "private database",
                  qPrintable(error));
        m_vault = std::make_unique<SecretVault>(db, nullptr);
    }
    m_subscriptions->setVault(m_vault.get());
    m_settings->setVault(m_vault.get());
}

void EngineCorePrivate::createFetching()
{
    if (!fetcher)
        fetcher = std::make_unique<DiscoveringFetcher>(std::make_unique<HttpFeedFetcher>());
    fetcher->setPolicy(policy);
    m_catalog =
        std::make_unique<CatalogRequests>(*m_subscriptions, *m_articles, resolver, importers, m_outbox);
    m_documents = std::make_unique<DocumentRequests>(fetcher, resolver, importers, messenger());
    m_requests->registerKind(QStringLiteral("LIST"),
                             [this](const RequestProcessor::Origin &origin, const PropertyBag &request) {
                                 m_catalog->list(origin, request);
                             });
    m_requests->registerKind(QStringLiteral("ITEMS"),
                             [this](const RequestProcessor::Origin &origin, const PropertyBag &request) {
                                 m_catalog->items(origin, request);
                             });
    m_requests->registerKind(QStringLiteral("FETCHOPML"), [this](const RequestProcessor::Origin &origin,
                                                                 const PropertyBag &request) {
        m_documents->fetchOpml(origin.session, origin.callbackId, request.text(QStringLiteral("URL")));
    });
    m_deliveryStore = std::make_unique<DeliveryStore>(*m_db);
    m_changes = std::make_unique<SubscriptionChanges>(*m_subscriptions, messenger());
    m_delivery = std::make_unique<DeliveryRequests>(*m_deliveryStore, m_outbox, messenger(), *m_changes);
    m_delivery->registerWith(*m_requests);
    m_updater = std::make_unique<FeedUpdater>(
        m_db->filePath(), *m_subscriptions, *m_defaults, fetcher, resolver, messenger(), now,
        [this](const FeedStoreWorker::Outcome &outcome) { updateFinished(outcome); });
    m_scheduler = std::make_unique<FeedScheduler>(*m_db, *m_subscriptions, *m_defaults, now,
                                                  [this](qint32 id) { m_updater->update(id); });
    if (m_updating)
        m_scheduler->start();
    m_sync = std::make_unique<OnlineSync>(
        SyncJournal(*m_db, *m_subscriptions, *m_settings), *m_settings, *m_subscriptions, *m_log, now,
        messenger(), [this](const SyncJournal::Applied &applied) { syncApplied(applied); });
    m_sync->follow();
}

EngineMessenger EngineCorePrivate::messenger()
{
    return {[this](qint32 session, qint32 callbackId, BagPtr message) {
                m_outbox.toCallback(session, callbackId, std::move(message));
                if (m_callDepth == 0)
                    m_outbox.flush(sessions);
            },
            [this](BagPtr message) {
                m_outbox.toConnected(std::move(message));
                if (m_callDepth == 0)
                    m_outbox.flush(sessions);
            }};
}

void EngineCorePrivate::syncApplied(const SyncJournal::Applied &applied)
{
    if (!applied.added.isEmpty() || !applied.removed.isEmpty())
        m_scheduler->poke();
    // Marks taken from the server reach the tree's counts and the delivered messages.
    if (!applied.countsChanged.isEmpty())
        m_changes->countsChanged(applied.countsChanged.values());
    if (applied.readChanged > 0)
        m_delivery->announceReadMarks();
}

void EngineCorePrivate::updateFinished(const FeedStoreWorker::Outcome &outcome)
{
    const qint32 subscriptionId = outcome.subscriptionId;
    const QString &status = outcome.status;
    if (!status.isEmpty()) {
        const bool failed = status.startsWith(QLatin1String("Error"));
        m_log->writeToFile(failed ? GeneralSettingKeys::kLineError : GeneralSettingKeys::kLineDetail,
                           QStringLiteral("ENGINE"),
                           QStringLiteral("Subscription %1: %2").arg(subscriptionId).arg(status), now());
    }
    if (m_scheduler->finished(subscriptionId)) {
        try {
            m_subscriptions->setNextUpdate(subscriptionId, now());
        } catch (const std::exception &e) {
            qCWarning(lcCore) << "cannot schedule subscription" << subscriptionId << e.what();
        }
        m_scheduler->poke();
    }
    // Counting what consumers wait for costs more than a whole "304": only after a change. Both
    // reads only serve connected clients.
    if (!sessions.anyConnected()) {
        m_changes->forget(subscriptionId);
    } else {
        if (outcome.articlesChanged)
            m_delivery->announce(subscriptionId, outcome.newEnclosures);
        if (outcome.articlesChanged || outcome.feedStored)
            m_changes->afterUpdate(subscriptionId);
        else
            m_changes->afterStatus(subscriptionId, status);
    }
    if (!status.isEmpty() && updated)
        updated(subscriptionId, status);
}

void EngineCorePrivate::startUpdating()
{
    m_updating = true;
    if (m_scheduler)
        m_scheduler->start();
}

void EngineCorePrivate::runDueUpdates()
{
    if (m_scheduler)
        m_scheduler->runDue();
}

PropertyValue EngineCorePrivate::call(SessionId session, const QString &operation,
                                      const QList<PropertyValue> &args)
{
    const auto it = operations().constFind(operation);
    if (it == operations().cend())
        throw EngineError(QStringLiteral("Unknown engine operation %1").arg(operation));
    if (!m_db)
        throw EngineError(QStringLiteral("The engine's store is not open"));
    sessions.requireOpen(session);
    const OperationArguments arguments(operation, args);
    arguments.expectCount(it->argumentCount);
    PropertyValue result;
    {
        const CallDepth depth(m_callDepth);
        result = callHandler(*it, Call{session, arguments});
    }
    m_outbox.flush(sessions);
    // An add or a changed subscription may be due now, and it may carry a password.
    if (it->writes && m_scheduler)
        m_scheduler->poke();
    if (it->writes)
        m_vault->changed();
    return result;
}

PropertyValue EngineCorePrivate::callHandler(const Operation &operation, const Call &call)
{
    try {
        if (!operation.writes)
            return (this->*operation.handler)(call);
        SqlTransaction transaction(*m_db);
        PropertyValue result = (this->*operation.handler)(call);
        transaction.commit();
        return result;
    } catch (const EngineError &) {
        m_outbox.discard();
        throw;
    } catch (const std::exception &e) {
        m_outbox.discard();
        throw EngineError(
            QStringLiteral("%1 failed: %2").arg(call.args.operation(), QString::fromLocal8Bit(e.what())));
    }
}

} // namespace quillon
