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
    explicit Stores(const QString &path) : db(path), subscriptions(db), articles(db), settings(db) { db.open(); }

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
    m_thread.start();
}

FeedStoreWorker::~FeedStoreWorker()
{
    m_stopping = true;
    // The connection belongs to the worker's thread and is closed there.
    QMetaObject::invokeMethod(&m_context, [this]() { m_stores.reset(); }, Qt::BlockingQueuedConnection);
    m_thread.quit();
    m_thread.wait();
}

void FeedStoreWorker::post(std::function<void()> work)
{
    QMetaObject::invokeMethod(&m_context, [this, work = std::move(work)]() {
        if (!m_stopping)
            work();
    }, Qt::QueuedConnection);
}

FeedStoreWorker::Stores &FeedStoreWorker::stores()
{
    if (!m_stores)
        m_stores = std::make_unique<Stores>(m_databasePath);
    return *m_stores;
}

void FeedStoreWorker::storeFeed(qint32 subscriptionId, const Plan &plan, FetchResult result, ParsedFeed feed)
{
    post([this, subscriptionId, plan, result = std::move(result), feed = std::move(feed)]() {
        Outcome outcome;
        try {
            outcome = store(subscriptionId, plan, result, feed);
        } catch (const std::exception &e) {
            qCWarning(lcCore) << "cannot store subscription" << subscriptionId << e.what();
            outcome = {subscriptionId, QStringLiteral("Error: ") + QString::fromLocal8Bit(e.what()), false, false};
        }
        m_report(outcome);
    });
}

void FeedStoreWorker::recordStatus(qint32 subscriptionId, const Plan &plan, const QString &status,
                                   bool loginRequired)
{
    post([this, subscriptionId, plan, status, loginRequired]() {
        // A subscription removed meanwhile has no row left to change, so nothing is written.
        try {
            record(subscriptionId, plan, status);
        } catch (const std::exception &e) {
            qCWarning(lcCore) << "cannot record the update of subscription" << subscriptionId << e.what();
        }
        m_report({subscriptionId, status, false, loginRequired});
    });
}

FeedStoreWorker::Outcome FeedStoreWorker::store(qint32 subscriptionId, const Plan &plan,
                                                const FetchResult &result, const ParsedFeed &feed)
{
    Stores &s = stores();
    SqlTransaction transaction(s.db);
    if (!s.subscriptions.exists(subscriptionId))
        return {subscriptionId, {}, false, false}; // removed while it was fetched
    const ArticleStore::Stored stored = s.articles.store(subscriptionId, feed, feed.ok(), plan.now);
    s.subscriptions.fillTitle(subscriptionId, ArticleText::plain(feed.title));
    if (result.discoveredFrom.isValid() && feed.ok())
        s.subscriptions.moveToFeed(subscriptionId, result.finalUrl.toString());
    purgeOld(subscriptionId, plan);
    const QString status = statusOf(feed, stored.added);
    // A document read only in part is fetched whole next time.
    s.subscriptions.recordFetch(subscriptionId,
                                {status, plan.now, plan.now.addSecs(plan.frequency), true,
                                 feed.ok() ? result.etag : QString(), feed.ok() ? result.lastModified : QString()});
    transaction.commit();
    // Once the media consumer holds an answer for the subscription, nobody needs asking.
    const bool prompt = stored.newEnclosures > 0 &&
                        !s.settings.value(QStringLiteral("MEDIACONSUMER"),
                                          QStringLiteral("SubscriptionSpecifics_%1").arg(subscriptionId),
                                          QStringLiteral("EnableAutoDownload"));
    return {subscriptionId, status, prompt, false};
}

void FeedStoreWorker::record(qint32 subscriptionId, const Plan &plan, const QString &status)
{
    Stores &s = stores();
    SqlTransaction transaction(s.db);
    purgeOld(subscriptionId, plan);
    s.subscriptions.recordFetch(subscriptionId, {status, plan.now, plan.now.addSecs(plan.frequency), false, {}, {}});
    transaction.commit();
}

void FeedStoreWorker::purgeOld(qint32 subscriptionId, const Plan &plan)
{
    stores().articles.purge(subscriptionId, plan.readAge > 0 ? plan.now.addSecs(-plan.readAge) : QDateTime(),
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
