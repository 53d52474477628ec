#pragma once

#include "SlicedWork.h"
#include "SyncOutcome.h"
#include "SyncPlan.h"
#include "SyncService.h"

#include <functional>

namespace quillon {

// One synchronisation, step by step on the event loop: log on, send the subscriptions changed
// here, read the server's, compare the read states of the feeds whose counts differ, send the
// read marks changed here, and hand over what the engine must change.
class SyncRun
{
public:
    struct Result
    {
        SyncOutcome outcome;
        QList<RemoteFeed> remote;
        SyncPlan::Subscriptions subscriptions;
        SyncPlan::ReadStates reads;
    };
    using Finished = std::function<void(const Result &result)>;
    // The articles here of these subscriptions.
    using ArticlesOf = std::function<QList<LocalArticle>(const QList<qint32> &subscriptionIds)>;

    SyncRun(SyncService &service, SyncSnapshot snapshot, ArticlesOf articlesOf, Finished finished);
    void start(const SyncAccount &account);
    [[nodiscard]] const SyncSnapshot &snapshot() const { return m_snapshot; }

private:
    // Pieces of a slice: well under a millisecond each.
    static constexpr qsizetype kArticlesAtOnce = 50;
    static constexpr qsizetype kGroupedAtOnce = 250;

    void feedsRead(const QList<RemoteFeed> &remote);
    void sendSubscription(int index);
    void sendUnsubscription(int index);
    void readArticles();
    void articlesRead(const QList<RemoteArticle> &articles);
    [[nodiscard]] bool compareSome(const QDeadlineTimer &deadline);
    void groupNext();
    void compareNext();
    void sendReadMarks();

    SyncService &m_service;
    SyncSnapshot m_snapshot;
    ArticlesOf m_articlesOf;
    Finished m_finished;
    Result m_result;
    QList<RemoteFeed> m_compared;
    QSet<QString> m_comparedIds;
    qsizetype m_comparedDone = 0;
    QList<RemoteArticle> m_remoteArticles;
    qsizetype m_grouped = 0;
    QHash<QString, QList<RemoteArticle>> m_remoteByFeed; // by the server's feed ID
    QHash<QString, QList<qint32>> m_idsByUrl;            // subscriptions here
    SlicedWork m_slices;
};

} // namespace quillon
