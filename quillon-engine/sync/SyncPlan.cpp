#include "SyncPlan.h"

namespace quillon {

SyncPlan::Subscriptions SyncPlan::subscriptions(const SyncSnapshot &snapshot, const QList<RemoteFeed> &remote)
{
    Subscriptions plan;
    QSet<QString> remoteUrls;
    for (const RemoteFeed &feed : remote)
        remoteUrls.insert(feed.url);
    QSet<QString> localUrls;
    for (const LocalSubscription &local : snapshot.subscriptions) {
        if (localUrls.contains(local.url))
            continue;
        localUrls.insert(local.url);
        if (remoteUrls.contains(local.url))
            continue;
        const bool removedThere =
            snapshot.agreedUrls.contains(local.url) && !snapshot.subscribedHere.contains(local.url);
        if (removedThere)
            plan.removeHere.append(local.id);
        else
            plan.subscribeRemote.append(local);
    }
    for (const RemoteFeed &feed : remote) {
        if (localUrls.contains(feed.url))
            continue;
        localUrls.insert(feed.url);
        const bool removedHere =
            snapshot.agreedUrls.contains(feed.url) || snapshot.unsubscribedHere.contains(feed.url);
        if (removedHere)
            plan.unsubscribeRemote.append(feed);
        else
            plan.addHere.append(feed);
    }
    return plan;
}

namespace {
QString articleKey(const QString &feedUrl, const QString &what, const QString &value)
{
    return feedUrl + QLatin1Char('\n') + what + QLatin1Char('\n') + value;
}
} // namespace

QStringList SyncPlan::feedsToCompare(const SyncSnapshot &snapshot, const QList<RemoteFeed> &feeds)
{
    QHash<QString, int> unreadHere; // by feed address, for feeds with articles here
    QSet<QString> changedHere;
    for (const LocalArticle &article : snapshot.articles) {
        unreadHere[article.feedUrl] += article.read ? 0 : 1;
        if (snapshot.readChangedHere.contains(article.id))
            changedHere.insert(article.feedUrl);
    }
    QStringList ids;
    for (const RemoteFeed &feed : feeds) {
        const auto here = unreadHere.constFind(feed.url);
        if (here != unreadHere.cend() && (*here != feed.unread || changedHere.contains(feed.url)))
            ids.append(feed.id);
    }
    return ids;
}

SyncPlan::ReadStates SyncPlan::readStates(const SyncSnapshot &snapshot, const QList<RemoteFeed> &feeds,
                                          const QList<RemoteArticle> &articles)
{
    QHash<QString, const LocalArticle *> local;
    for (const LocalArticle &article : snapshot.articles) {
        if (!article.link.isEmpty())
            local.insert(articleKey(article.feedUrl, QStringLiteral("link"), article.link), &article);
        local.insert(articleKey(article.feedUrl, QStringLiteral("guid"), article.guid), &article);
    }
    QHash<QString, QString> feedUrls;
    for (const RemoteFeed &feed : feeds)
        feedUrls.insert(feed.id, feed.url);

    ReadStates plan;
    for (const RemoteArticle &remote : articles) {
        const QString feedUrl = feedUrls.value(remote.feedId);
        const LocalArticle *match = local.value(articleKey(feedUrl, QStringLiteral("link"), remote.link));
        if (!match)
            match = local.value(articleKey(feedUrl, QStringLiteral("guid"), remote.guid));
        if (feedUrl.isEmpty() || !match)
            continue;
        const auto changed = snapshot.readChangedHere.constFind(match->id);
        if (changed == snapshot.readChangedHere.cend()) {
            if (remote.read != match->read)
                plan.setHere.insert(match->id, remote.read);
        } else if (*changed != remote.read) {
            (*changed ? plan.markReadRemote : plan.markUnreadRemote).append(remote.id);
        }
    }
    return plan;
}

} // namespace quillon
