#pragma once

#include "ArticleStore.h"
#include "EngineMessenger.h"
#include "FeedFetcher.h"
#include "ParsedFeed.h"
#include "SubscriptionStore.h"

#include <QDateTime>
#include <QObject>
#include <QThreadPool>

#include <functional>
#include <memory>

namespace quillon {

class AddressResolver;
class EngineDatabase;
class EngineDefaults;
class SettingsStore;

// Brings one subscription up to date: fetches it (conditionally), parses it off the engine's
// thread, stores the new articles with the status in one transaction, deletes articles past
// their age, and tells the consumers what needs them ("LoginRequired", "PromptForDownload").
class FeedUpdater : public QObject
{
    Q_OBJECT
public:
    struct Stores
    {
        EngineDatabase &db;
        SubscriptionStore &subscriptions;
        ArticleStore &articles;
        SettingsStore &settings;
        EngineDefaults &defaults;
    };
    using Clock = std::function<QDateTime()>;
    // Called once per update with the status it ended with.
    using Finished = std::function<void(qint32 subscriptionId, const QString &status)>;

    FeedUpdater(Stores stores, const std::unique_ptr<FeedFetcher> &fetcher, const AddressResolver &resolver,
                EngineMessenger messenger, const Clock &clock, Finished finished);
    ~FeedUpdater() override;

    void update(qint32 subscriptionId);

    // "OK: 20 items, 3 new", or the parse error and what was kept.
    [[nodiscard]] static QString statusOf(const ParsedFeed &feed, int added);

private:
    using FetchInfo = SubscriptionStore::FetchInfo;

    void fetched(qint32 subscriptionId, const FetchInfo &info, const FetchResult &result);
    void parsed(qint32 subscriptionId, const FetchResult &result, const ParsedFeed &feed);
    // Stores the feed with its status in one transaction; returns the status, or nothing when
    // the subscription is gone.
    QString store(qint32 subscriptionId, const FetchResult &result, const ParsedFeed &feed,
                  ArticleStore::Stored &stored);
    // Records an update that brought no document, with the settings read when it began.
    void record(qint32 subscriptionId, const FetchInfo &info, const QString &status);
    void purgeOld(qint32 subscriptionId, qint32 deleteRead, qint32 deleteUnread, const QDateTime &now);
    [[nodiscard]] bool wantsDownloadDecision(qint32 subscriptionId);
    void announce(const QString &message, qint32 subscriptionId);
    void done(qint32 subscriptionId, const QString &status);

    Stores m_stores;
    const std::unique_ptr<FeedFetcher> &m_fetcher;
    const AddressResolver &m_resolver;
    EngineMessenger m_messenger;
    const Clock &m_clock;
    Finished m_finished;
    QThreadPool m_parsers;
};

} // namespace quillon
