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
            snapshot.agreed.contains(local.url) && !snapshot.subscribedHere.contains(local.url);
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
            snapshot.agreed.contains(feed.url) || snapshot.unsubscribedHere.contains(feed.url);
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

QList<RemoteFeed> SyncPlan::feedsToCompare(const SyncSnapshot &snapshot, const QList<RemoteFeed> &feeds)
{
    QList<RemoteFeed> compared;
    for (const RemoteFeed &feed : feeds) {
        const auto here = snapshot.unreadByFeed.constFind(feed.url);
        if (here != snapshot.unreadByFeed.cend() &&
            (*here != feed.unread || snapshot.feedsChangedHere.contains(feed.url)))
            compared.append(feed);
    }
    return compared;
}

void SyncPlan::compareReadStates(const SyncSnapshot &snapshot, const QList<RemoteFeed> &feeds,
                                 const QList<LocalArticle> &local, const QList<RemoteArticle> &remote,
                                 ReadStates &into)
{
    QHash<QString, const LocalArticle *> byKey;
    for (const LocalArticle &article : local) {
        if (!article.link.isEmpty())
            byKey.insert(articleKey(article.feedUrl, QStringLiteral("link"), article.link), &article);
        byKey.insert(articleKey(article.feedUrl, QStringLiteral("guid"), article.guid), &article);
    }
    QHash<QString, QString> feedUrls;
    for (const RemoteFeed &feed : feeds)
        feedUrls.insert(feed.id, feed.url);

    for (const RemoteArticle &article : remote) {
        const QString feedUrl = feedUrls.value(article.feedId);
        const LocalArticle *match = byKey.value(articleKey(feedUrl, QStringLiteral("link"), article.link));
        if (!match)
            match = byKey.value(articleKey(feedUrl, QStringLiteral("guid"), article.guid));
        if (feedUrl.isEmpty() || !match)
            continue;
        const auto changed = snapshot.readChangedHere.constFind(match->id);
        if (changed == snapshot.readChangedHere.cend()) {
            if (article.read != match->read)
                into.setHere.insert(match->id, article.read);
        } else if (*changed != article.read) {
            (*changed ? into.markReadRemote : into.markUnreadRemote).append(article.id);
        }
    }
}

} // namespace quillon
