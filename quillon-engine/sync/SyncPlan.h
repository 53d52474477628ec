#pragma once

#include "SyncTypes.h"

#include <QStringList>

namespace quillon {

// What a run changes on either side, decided from the engine's snapshot and what the server
// holds; no I/O. A subscription both sides had at the last run and one side lacks now was
// removed there; one the other side never had was added. The server reports no times, so its
// changes count as made at the last run: a change queued here since then wins.
class SyncPlan
{
public:
    struct Subscriptions
    {
        QList<LocalSubscription> subscribeRemote;
        QList<RemoteFeed> unsubscribeRemote;
        QList<RemoteFeed> addHere;
        QList<qint32> removeHere;

        [[nodiscard]] bool changesRemote() const
        {
            return !subscribeRemote.isEmpty() || !unsubscribeRemote.isEmpty();
        }
    };
    struct ReadStates
    {
        QStringList markReadRemote;
        QStringList markUnreadRemote;
        // Article ID to its new read state here.
        QHash<qint64, bool> setHere;
    };

    [[nodiscard]] static Subscriptions subscriptions(const SyncSnapshot &snapshot,
                                                     const QList<RemoteFeed> &remote);
    // The server's feeds whose read states need comparing: those with articles here whose unread
    // count differs from the server's (or the server gives none), and those with read marks
    // queued here. Every other feed agrees already, so a run that changes nothing costs no headlines.
    [[nodiscard]] static QList<RemoteFeed> feedsToCompare(const SyncSnapshot &snapshot,
                                                          const QList<RemoteFeed> &feeds);
    // Adds what the read states of some compared feeds ask for: local are their articles here,
    // remote the server's. Articles are matched within their feed by link, else by guid.
    static void compareReadStates(const SyncSnapshot &snapshot, const QList<RemoteFeed> &feeds,
                                  const QList<LocalArticle> &local, const QList<RemoteArticle> &remote,
                                  ReadStates &into);
};

} // namespace quillon
