#include "SyncRun.h"

namespace quillon {

SyncRun::SyncRun(SyncService &service, SyncSnapshot snapshot, Finished finished)
    : m_service(service), m_snapshot(std::move(snapshot)), m_finished(std::move(finished))
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
    m_service.articles(SyncPlan::feedsToCompare(m_snapshot, m_result.remote),
                       [this](const QList<RemoteArticle> &articles) { articlesRead(articles); });
}

void SyncRun::articlesRead(const QList<RemoteArticle> &articles)
{
    m_result.reads = SyncPlan::readStates(m_snapshot, m_result.remote, articles);
    m_service.setRead(m_result.reads.markReadRemote, true, [this] {
        m_service.setRead(m_result.reads.markUnreadRemote, false, [this] { m_finished(m_result); });
    });
}

} // namespace quillon
