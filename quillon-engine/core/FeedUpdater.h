#pragma once

#include "EngineMessenger.h"
#include "FeedFetcher.h"
#include "FeedStoreWorker.h"

#include <QDateTime>
#include <QObject>
#include <QThreadPool>

#include <deque>
#include <functional>
#include <memory>

namespace quillon {

class AddressResolver;
class EngineDefaults;
class SubscriptionStore;

// Brings subscriptions up to date: fetches each (conditionally), parses it on a thread pool,
// stores the new articles with the status and the age deletions on the store's own thread
// (FeedStoreWorker), and tells the consumers what needs them ("LoginRequired",
// "PromptForDownload") once that is committed. Only a bounded number of updates are under way
// at once; the rest wait in order, so a thousand feeds due cost the core's thread no burst.
class FeedUpdater : public QObject
{
    Q_OBJECT
public:
    using Clock = std::function<QDateTime()>;
    // Called once per update with the status it ended with.
    using Finished = std::function<void(const FeedStoreWorker::Outcome &outcome)>;

    FeedUpdater(const QString &databasePath, SubscriptionStore &subscriptions, EngineDefaults &defaults,
                const std::unique_ptr<FeedFetcher> &fetcher, const AddressResolver &resolver,
                EngineMessenger messenger, const Clock &clock, Finished finished);
    ~FeedUpdater() override;

    // Queues the update; it begins once fewer than kUnderWay updates are under way.
    void update(qint32 subscriptionId);

    // Enough to keep every connection of the fetcher busy while earlier feeds are stored.
    static constexpr int kUnderWay = 32;

private:
    void startWaiting();
    void begin(qint32 subscriptionId);
    void fetched(qint32 subscriptionId, const FeedStoreWorker::Plan &plan, const FetchResult &result);
    void stored(const FeedStoreWorker::Outcome &outcome);
    void announce(const QString &message, qint32 subscriptionId);

    SubscriptionStore &m_subscriptions;
    EngineDefaults &m_defaults;
    const std::unique_ptr<FeedFetcher> &m_fetcher;
    const AddressResolver &m_resolver;
    EngineMessenger m_messenger;
    const Clock &m_clock;
    Finished m_finished;
    std::deque<qint32> m_waiting;
    int m_underWay = 0;
    QThreadPool m_parsers;
    std::unique_ptr<FeedStoreWorker> m_store;
};

} // namespace quillon
