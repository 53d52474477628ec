#include "SyncRun.h"

namespace quillon {

SyncRun::SyncRun(SyncService &service, SyncSnapshot snapshot, ArticlesOf articlesOf, Finished finished)
    : m_service(service), m_snapshot(std::move(snapshot)), m_articlesOf(std::move(articlesOf)),
      m_finished(std::move(finished))
{
}

void SyncRun::start(const SyncAccount &account)
{
    m_service.onFailure([this](const SyncOutcome &outcome) {
        m_result.outcome = outcome;
        m_finished(m_result);
    });
    m_service.open(
        account, [this] { m_service.feeds([this](const QList<RemoteFeed> &remote) { feedsRead(remote); }); });
}

void SyncRun::feedsRead(const QList<RemoteFeed> &remote)
{
    m_result.remote = remote;
    m_result.subscriptions = SyncPlan::subscriptions(m_snapshot, remote);
    sendSubscription(0);
}

void SyncRun::sendSubscription(int index)
{
    const auto &list = m_result.subscriptions.subscribeRemote;
    if (index >= list.size())
        return sendUnsubscription(0);
    m_service.subscribe(list.at(index), [this, index] { sendSubscription(index + 1); });
}

void SyncRun::sendUnsubscription(int index)
{
    const auto &list = m_result.subscriptions.unsubscribeRemote;
    if (index < list.size())
        return m_service.unsubscribe(list.at(index), [this, index] { sendUnsubscription(index + 1); });
    if (!m_result.subscriptions.changesRemote())
        return readArticles();
    // What the server made of the sent subscriptions (its IDs, refusals) is what both now hold.
    m_service.feeds([this](const QList<RemoteFeed> &remote) {
        m_result.remote = remote;
        readArticles();
    });
}

void SyncRun::readArticles()
{
    m_compared = SyncPlan::feedsToCompare(m_snapshot, m_result.remote);
    QStringList ids;
    for (const RemoteFeed &feed : std::as_const(m_compared))
        ids.append(feed.id);
    m_comparedIds = QSet<QString>(ids.cbegin(), ids.cend());
    m_service.articles(ids, [this](const QList<RemoteArticle> &articles) { articlesRead(articles); });
}

void SyncRun::articlesRead(const QList<RemoteArticle> &articles)
{
    m_remoteArticles = articles;
    for (const LocalSubscription &local : std::as_const(m_snapshot.subscriptions))
        m_idsByUrl[local.url].append(local.id);
    m_slices.run([this](const QDeadlineTimer &deadline) { return compareSome(deadline); },
                 [this] { sendReadMarks(); });
}

bool SyncRun::compareSome(const QDeadlineTimer &deadline)
{
    do {
        if (m_grouped < m_remoteArticles.size())
            groupNext();
        else if (m_comparedDone < m_compared.size())
            compareNext();
        else
            return true;
    } while (!deadline.hasExpired());
    return false;
}

void SyncRun::groupNext()
{
    const qsizetype end = std::min(m_remoteArticles.size(), m_grouped + kGroupedAtOnce);
    for (; m_grouped < end; ++m_grouped) {
        RemoteArticle &article = m_remoteArticles[m_grouped];
        if (m_comparedIds.contains(article.feedId))
            m_remoteByFeed[article.feedId].append(std::move(article));
        else
            article = {}; // freed here, a slice at a time, not all at the end
    }
}

void SyncRun::compareNext()
{
    // The next few feeds, one at least, with their articles here and on the server.
    QList<RemoteFeed> feeds;
    QList<qint32> ids;
    QList<RemoteArticle> remote;
    while (m_comparedDone < m_compared.size() && (feeds.isEmpty() || remote.size() < kArticlesAtOnce)) {
        const RemoteFeed &feed = m_compared.at(m_comparedDone++);
        feeds.append(feed);
        ids.append(m_idsByUrl.value(feed.url));
        remote.append(m_remoteByFeed.take(feed.id));
    }
    SyncPlan::compareReadStates(m_snapshot, feeds, m_articlesOf(ids), remote, m_result.reads);
}

void SyncRun::sendReadMarks()
{
    m_remoteArticles.clear();
    m_remoteByFeed.clear();
    m_service.setRead(m_result.reads.markReadRemote, true, [this] {
        m_service.setRead(m_result.reads.markUnreadRemote, false, [this] { m_finished(m_result); });
    });
}

} // namespace quillon
