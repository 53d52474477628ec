#include "FeedUpdater.h"

#include "AddressResolver.h"
#include "CoreLogging.h"
#include "EngineDefaults.h"
#include "EngineMessages.h"
#include "FeedParser.h"
#include "SubscriptionStore.h"

#include <QPointer>

namespace quillon {

FeedUpdater::FeedUpdater(const QString &databasePath, SubscriptionStore &subscriptions,
                         EngineDefaults &defaults, const std::unique_ptr<FeedFetcher> &fetcher,
                         const AddressResolver &resolver, EngineMessenger messenger, const Clock &clock,
                         Finished finished)
    : m_subscriptions(subscriptions), m_defaults(defaults), m_fetcher(fetcher), m_resolver(resolver),
      m_messenger(std::move(messenger)), m_clock(clock), m_finished(std::move(finished))
{
    // Reports come from the store's thread and are handled on this one, in the order committed.
    m_store = std::make_unique<FeedStoreWorker>(
        databasePath, [this](const QList<FeedStoreWorker::Outcome> &outcomes) {
            QMetaObject::invokeMethod(
                this,
                [this, outcomes]() {
                    for (const FeedStoreWorker::Outcome &outcome : outcomes)
                        stored(outcome);
                },
                Qt::QueuedConnection);
        });
}

FeedUpdater::~FeedUpdater()
{
    // Parses still running hand their feeds to the store; then the store drops what is left.
    // Reports already posted to this object die with it.
    m_parsers.waitForDone();
    m_store.reset();
}

void FeedUpdater::update(qint32 subscriptionId)
{
    m_waiting.push_back(subscriptionId);
    startWaiting();
}

void FeedUpdater::startWaiting()
{
    while (m_underWay < kUnderWay && !m_waiting.empty()) {
        const qint32 id = m_waiting.front();
        m_waiting.pop_front();
        ++m_underWay;
        begin(id);
    }
}

void FeedUpdater::begin(qint32 subscriptionId)
{
    std::optional<SubscriptionStore::FetchInfo> info;
    try {
        info = m_subscriptions.fetchInfo(subscriptionId);
    } catch (const std::exception &e) {
        qCWarning(lcCore) << "cannot update subscription" << subscriptionId << e.what();
    }
    if (!info) {
        // Removed while it waited; answered from the event loop like every other update.
        QMetaObject::invokeMethod(
            this,
            [this, subscriptionId]() {
                stored({subscriptionId, {}, false, false});
            },
            Qt::QueuedConnection);
        return;
    }
    const FeedStoreWorker::Plan plan{m_defaults.deleteReadAge(info->deleteRead),
                                     m_defaults.deleteUnreadAge(info->deleteUnread),
                                     m_defaults.updateFrequency(info->updateFreq), QDateTime()};
    const FeedAddress::Resolved resolved = m_resolver.resolve(info->url);
    if (!resolved.ok()) {
        FeedStoreWorker::Plan now = plan;
        now.now = m_clock();
        m_store->recordStatus(subscriptionId, now, QStringLiteral("Error: ") + resolved.error);
        return;
    }
    const FetchRequest request{resolved.url, info->etag, info->lastModified, info->user, info->password};
    QPointer<FeedUpdater> self(this);
    m_fetcher->fetch(request, [self, subscriptionId, plan](const FetchResult &result) {
        if (self)
            self->fetched(subscriptionId, plan, result);
    });
}

void FeedUpdater::fetched(qint32 subscriptionId, const FeedStoreWorker::Plan &fetchPlan,
                          const FetchResult &result)
{
    FeedStoreWorker::Plan plan = fetchPlan;
    plan.now = m_clock();
    if (!result.ok()) {
        m_store->recordStatus(subscriptionId, plan, result.describe(),
                              result.outcome == FetchResult::Outcome::Unauthorized);
        return;
    }
    // Parsing is the costly part and touches nothing shared. The destructor waits for running
    // parses, so the store outlives every task.
    m_parsers.start([this, subscriptionId, plan, result]() {
        m_store->storeFeed(subscriptionId, plan, result,
                           FeedParser::parse(result.body, result.contentType, result.finalUrl));
    });
}

void FeedUpdater::stored(const FeedStoreWorker::Outcome &outcome)
{
    --m_underWay;
    const qint32 id = outcome.subscriptionId;
    if (outcome.loginRequired)
        announce(QStringLiteral("LoginRequired"), id);
    if (outcome.promptForDownload)
        announce(QStringLiteral("PromptForDownload"), id);
    if (!outcome.status.isEmpty())
        qCDebug(lcCore).noquote() << "subscription" << id << outcome.status;
    m_finished(outcome);
    startWaiting();
}

void FeedUpdater::announce(const QString &message, qint32 subscriptionId)
{
    auto payload = PropertyBag::create();
    payload->setLong(QStringLiteral("SUBSCRIPTIONID"), subscriptionId);
    m_messenger.toConnected(EngineMessages::message(message, payload));
}

} // namespace quillon
