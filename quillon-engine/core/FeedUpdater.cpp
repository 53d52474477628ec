#include "FeedUpdater.h"

#include "AddressResolver.h"
#include "ArticleStore.h"
#include "ArticleText.h"
#include "CoreLogging.h"
#include "EngineDefaults.h"
#include "EngineMessages.h"
#include "FeedParser.h"
#include "SettingsStore.h"
#include "SqlTransaction.h"
#include "SubscriptionStore.h"

#include <QPointer>

namespace quillon {

namespace {
QString itemsText(qsizetype count)
{
    return count == 1 ? QStringLiteral("1 item") : QStringLiteral("%1 items").arg(count);
}
} // namespace

FeedUpdater::FeedUpdater(Stores stores, const std::unique_ptr<FeedFetcher> &fetcher,
                         const AddressResolver &resolver, EngineMessenger messenger, const Clock &clock,
                         Finished finished)
    : m_stores(stores), m_fetcher(fetcher), m_resolver(resolver), m_messenger(std::move(messenger)),
      m_clock(clock), m_finished(std::move(finished))
{
}

FeedUpdater::~FeedUpdater()
{
    // Parses still running post their results to this object; those events die with it.
    m_parsers.waitForDone();
}

void FeedUpdater::update(qint32 subscriptionId)
{
    std::optional<SubscriptionStore::FetchInfo> info;
    try {
        info = m_stores.subscriptions.fetchInfo(subscriptionId);
    } catch (const std::exception &e) {
        qCWarning(lcCore) << "cannot update subscription" << subscriptionId << e.what();
    }
    if (!info) {
        done(subscriptionId, QString()); // removed while it waited
        return;
    }
    const FeedAddress::Resolved resolved = m_resolver.resolve(info->url);
    if (!resolved.ok()) {
        const QString status = QStringLiteral("Error: ") + resolved.error;
        record(subscriptionId, *info, status);
        done(subscriptionId, status);
        return;
    }
    const FetchRequest request{resolved.url, info->etag, info->lastModified, info->user, info->password};
    QPointer<FeedUpdater> self(this);
    m_fetcher->fetch(request, [self, subscriptionId, info = *info](const FetchResult &result) {
        if (self)
            self->fetched(subscriptionId, info, result);
    });
}

void FeedUpdater::fetched(qint32 subscriptionId, const FetchInfo &info, const FetchResult &result)
{
    if (!result.ok()) {
        record(subscriptionId, info, result.describe());
        if (result.outcome == FetchResult::Outcome::Unauthorized)
            announce(QStringLiteral("LoginRequired"), subscriptionId);
        done(subscriptionId, result.describe());
        return;
    }
    // Parsing is the costly part and touches nothing shared; the store stays on this thread.
    // The destructor waits for running parses, so this outlives every task.
    m_parsers.start([this, subscriptionId, result]() {
        ParsedFeed feed = FeedParser::parse(result.body, result.contentType, result.finalUrl);
        QMetaObject::invokeMethod(
            this,
            [this, subscriptionId, result, feed = std::move(feed)]() {
                parsed(subscriptionId, result, feed);
            },
            Qt::QueuedConnection);
    });
}

void FeedUpdater::parsed(qint32 subscriptionId, const FetchResult &result, const ParsedFeed &feed)
{
    QString status;
    ArticleStore::Stored stored;
    try {
        status = store(subscriptionId, result, feed, stored);
    } catch (const std::exception &e) {
        qCWarning(lcCore) << "cannot store subscription" << subscriptionId << e.what();
        status = QStringLiteral("Error: ") + QString::fromLocal8Bit(e.what());
        stored = {}; // rolled back
    }
    if (stored.newEnclosures > 0 && wantsDownloadDecision(subscriptionId))
        announce(QStringLiteral("PromptForDownload"), subscriptionId);
    done(subscriptionId, status);
}

QString FeedUpdater::store(qint32 subscriptionId, const FetchResult &result, const ParsedFeed &feed,
                           ArticleStore::Stored &stored)
{
    const QDateTime now = m_clock();
    SqlTransaction transaction(m_stores.db);
    const auto info = m_stores.subscriptions.fetchInfo(subscriptionId);
    if (!info)
        return {}; // removed while it was fetched
    stored = m_stores.articles.store(subscriptionId, feed, feed.ok(), now);
    m_stores.subscriptions.fillTitle(subscriptionId, ArticleText::plain(feed.title));
    if (result.discoveredFrom.isValid() && feed.ok())
        m_stores.subscriptions.moveToFeed(subscriptionId, result.finalUrl.toString());
    purgeOld(subscriptionId, info->deleteRead, info->deleteUnread, now);
    const QString status = statusOf(feed, stored.added);
    // A document read only in part is fetched whole next time.
    m_stores.subscriptions.recordFetch(
        subscriptionId, {status, now, now.addSecs(m_stores.defaults.updateFrequency(info->updateFreq)), true,
                         feed.ok() ? result.etag : QString(), feed.ok() ? result.lastModified : QString()});
    transaction.commit();
    return status;
}

void FeedUpdater::record(qint32 subscriptionId, const FetchInfo &info, const QString &status)
{
    // A subscription removed meanwhile has no row left to change, so nothing is written.
    try {
        const QDateTime now = m_clock();
        SqlTransaction transaction(m_stores.db);
        purgeOld(subscriptionId, info.deleteRead, info.deleteUnread, now);
        m_stores.subscriptions.recordFetch(
            subscriptionId,
            {status, now, now.addSecs(m_stores.defaults.updateFrequency(info.updateFreq)), false, {}, {}});
        transaction.commit();
    } catch (const std::exception &e) {
        qCWarning(lcCore) << "cannot record the update of subscription" << subscriptionId << e.what();
    }
}

void FeedUpdater::purgeOld(qint32 subscriptionId, qint32 deleteRead, qint32 deleteUnread,
                           const QDateTime &now)
{
    const qint32 readAge = m_stores.defaults.deleteReadAge(deleteRead);
    const qint32 unreadAge = m_stores.defaults.deleteUnreadAge(deleteUnread);
    m_stores.articles.purge(subscriptionId, readAge > 0 ? now.addSecs(-readAge) : QDateTime(),
                            unreadAge > 0 ? now.addSecs(-unreadAge) : QDateTime());
}

bool FeedUpdater::wantsDownloadDecision(qint32 subscriptionId)
{
    // Once the media consumer holds an answer for the subscription, nobody needs asking.
    return !m_stores.settings.value(QStringLiteral("MEDIACONSUMER"),
                                    QStringLiteral("SubscriptionSpecifics_%1").arg(subscriptionId),
                                    QStringLiteral("EnableAutoDownload"));
}

void FeedUpdater::announce(const QString &message, qint32 subscriptionId)
{
    auto payload = PropertyBag::create();
    payload->setLong(QStringLiteral("SUBSCRIPTIONID"), subscriptionId);
    m_messenger.toConnected(EngineMessages::message(message, payload));
}

void FeedUpdater::done(qint32 subscriptionId, const QString &status)
{
    if (!status.isEmpty())
        qCDebug(lcCore).noquote() << "subscription" << subscriptionId << status;
    m_finished(subscriptionId, status);
}

QString FeedUpdater::statusOf(const ParsedFeed &feed, int added)
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
