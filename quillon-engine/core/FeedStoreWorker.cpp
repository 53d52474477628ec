#include "FeedStoreWorker.h"

#include "ArticleStore.h"
#include "ArticleText.h"
#include "CoreLogging.h"
#include "EngineDatabase.h"
#include "SettingsStore.h"
#include "SqlTransaction.h"
#include "SubscriptionStore.h"

namespace quillon {

namespace {
QString itemsText(qsizetype count)
{
    return count == 1 ? QStringLiteral("1 item") : QStringLiteral("%1 items").arg(count);
}
} // namespace

struct FeedStoreWorker::Stores
{
    explicit Stores(const QString &path) : db(path), subscriptions(db), articles(db), settings(db)
    {
        db.open();
    }

    EngineDatabase db;
    SubscriptionStore subscriptions;
    ArticleStore articles;
    SettingsStore settings;
};

FeedStoreWorker::FeedStoreWorker(QString databasePath, Report report)
    : m_databasePath(std::move(databasePath)), m_report(std::move(report))
{
    m_thread.setObjectName(QStringLiteral("quillon-feed-store"));
    m_context.moveToThread(&m_thread);
    m_gather.setSingleShot(true);
    m_gather.setInterval(kGatherMs);
    m_gather.moveToThread(&m_thread);
    QObject::connect(&m_gather, &QTimer::timeout, &m_context, [this]() { drain(); });
    m_thread.start();
}

FeedStoreWorker::~FeedStoreWorker()
{
    m_stopping = true;
    // The connection belongs to the worker's thread and is closed there.
    QMetaObject::invokeMethod(
        &m_context,
        [this]() {
            m_gather.stop();
            m_stores.reset();
        },
        Qt::BlockingQueuedConnection);
    m_thread.quit();
    m_thread.wait();
}

void FeedStoreWorker::post(Work work)
{
    const QMutexLocker lock(&m_mutex);
    m_waiting.push_back(std::move(work));
    if (m_waiting.size() == std::size_t(kBatch)) {
        QMetaObject::invokeMethod(
            &m_context, [this]() { drain(); }, Qt::QueuedConnection);
        return;
    }
    if (std::exchange(m_drainPosted, true))
        return;
    // Started on the worker's thread, where the timer lives.
    QMetaObject::invokeMethod(
        &m_gather, [this]() { m_gather.start(); }, Qt::QueuedConnection);
}

void FeedStoreWorker::drain()
{
    m_gather.stop(); // a full batch came first: what it waited for is taken now
    while (!m_stopping) {
        QList<Work> batch;
        {
            const QMutexLocker lock(&m_mutex);
            while (!m_waiting.empty() && batch.size() < kBatch) {
                batch.append(std::move(m_waiting.front()));
                m_waiting.pop_front();
            }
            if (batch.isEmpty()) {
                m_drainPosted = false;
                return;
            }
        }
        m_report(runBatch(batch));
    }
}

QList<FeedStoreWorker::Outcome> FeedStoreWorker::runBatch(const QList<Work> &batch)
{
    QList<Outcome> outcomes;
    try {
        Stores &s = stores();
        SqlTransaction transaction(s.db);
        for (const Work &work : batch)
            outcomes.append(work.run(s));
        transaction.commit();
    } catch (const std::exception &) {
        // Rolled back: each feed again on its own, so one that fails takes no other with it.
        outcomes.clear();
        for (const Work &work : batch) {
            try {
                Stores &s = stores();
                SqlTransaction transaction(s.db);
                outcomes.append(work.run(s));
                transaction.commit();
            } catch (const std::exception &single) {
                qCWarning(lcCore) << "cannot store subscription" << work.failed.subscriptionId
                                  << single.what();
                Outcome failed = work.failed;
                if (failed.status.isEmpty())
                    failed.status = QStringLiteral("Error: ") + QString::fromLocal8Bit(single.what());
                outcomes.append(failed);
            }
        }
    }
    for (Outcome &outcome : outcomes) {
        // Once the media consumer holds an answer for the subscription, nobody needs asking.
        if (outcome.promptForDownload && m_stores)
            outcome.promptForDownload = !m_stores->settings.value(
                QStringLiteral("MEDIACONSUMER"),
                QStringLiteral("SubscriptionSpecifics_%1").arg(outcome.subscriptionId),
                QStringLiteral("EnableAutoDownload"));
    }
    return outcomes;
}

FeedStoreWorker::Stores &FeedStoreWorker::stores()
{
    if (!m_stores)
        m_stores = std::make_unique<Stores>(m_databasePath);
    return *m_stores;
}

void FeedStoreWorker::storeFeed(qint32 subscriptionId, const Plan &plan, FetchResult result, ParsedFeed feed)
{
    post({[subscriptionId, plan, result = std::move(result), feed = std::move(feed)](Stores &s) {
              return store(s, subscriptionId, plan, result, feed);
          },
          {subscriptionId, {}, false, false}});
}

void FeedStoreWorker::recordStatus(qint32 subscriptionId, const Plan &plan, const QString &status,
                                   bool loginRequired)
{
    const Outcome outcome{subscriptionId, status, false, loginRequired};
    post({[subscriptionId, plan, outcome](Stores &s) {
              // A subscription removed meanwhile has no row left to change: no status then.
              Outcome done = outcome;
              done.articlesChanged = purgeOld(s, subscriptionId, plan) > 0;
              if (!s.subscriptions.recordFetch(
                      subscriptionId,
                      {outcome.status, plan.now, plan.now.addSecs(plan.frequency), false, {}, {}}))
                  done.status.clear();
              return done;
          },
          outcome});
}

FeedStoreWorker::Outcome FeedStoreWorker::store(Stores &s, qint32 subscriptionId, const Plan &plan,
                                                const FetchResult &result, const ParsedFeed &feed)
{
    if (!s.subscriptions.exists(subscriptionId))
        return {subscriptionId, {}, false, false}; // removed while it was fetched
    const ArticleStore::Stored stored = s.articles.store(subscriptionId, feed, feed.ok(), plan.now);
    s.subscriptions.fillTitle(subscriptionId, ArticleText::plain(feed.title));
    if (result.discoveredFrom.isValid() && feed.ok())
        s.subscriptions.moveToFeed(subscriptionId, result.finalUrl.toString());
    const int purged = purgeOld(s, subscriptionId, plan);
    const QString status = statusOf(feed, stored.added);
    // A document read only in part is fetched whole next time.
    s.subscriptions.recordFetch(subscriptionId, {status, plan.now, plan.now.addSecs(plan.frequency), true,
                                                 feed.ok() ? result.etag : QString(),
                                                 feed.ok() ? result.lastModified : QString()});
    // Asked only if the media consumer holds no answer yet; that is looked up after the commit.
    Outcome outcome{subscriptionId, status};
    outcome.promptForDownload = stored.newEnclosures > 0;
    outcome.articlesChanged = stored.added > 0 || purged > 0;
    outcome.newEnclosures = stored.newEnclosures > 0;
    outcome.feedStored = true;
    return outcome;
}

int FeedStoreWorker::purgeOld(Stores &s, qint32 subscriptionId, const Plan &plan)
{
    return s.articles.purge(subscriptionId, plan.readAge > 0 ? plan.now.addSecs(-plan.readAge) : QDateTime(),
                            plan.unreadAge > 0 ? plan.now.addSecs(-plan.unreadAge) : QDateTime());
}

QString FeedStoreWorker::statusOf(const ParsedFeed &feed, int added)
{
    const QString count = itemsText(feed.items.size());
    if (feed.ok())
        return QStringLiteral("OK: %1, %2 new").arg(count).arg(added);
    const QString kept = feed.items.isEmpty() ? QString() : QStringLiteral(" (%1 kept)").arg(count);
    if (feed.error == ParseError::NotWellFormed)
        return QStringLiteral("Error: malformed feed at %1%2").arg(feed.errorText, kept);
    return QStringLiteral("Error: %1%2").arg(feed.errorText, kept);
}

} // namespace quillon
