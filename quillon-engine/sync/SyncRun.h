#pragma once

#include "SyncOutcome.h"
#include "SyncPlan.h"
#include "SyncService.h"

#include <functional>

namespace quillon {

// One synchronisation, step by step on the event loop: log on, send the subscriptions changed
// here, read the server's, send the read marks changed here, and hand over what the engine
// must change.
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

    SyncRun(SyncService &service, SyncSnapshot snapshot, Finished finished);
    void start(const SyncAccount &account);
    [[nodiscard]] const SyncSnapshot &snapshot() const { return m_snapshot; }

private:
    void feedsRead(const QList<RemoteFeed> &remote);
    void sendSubscription(int index);
    void sendUnsubscription(int index);
    void readArticles();
    void articlesRead(const QList<RemoteArticle> &articles);

    SyncService &m_service;
    SyncSnapshot m_snapshot;
    Finished m_finished;
    Result m_result;
};

} // namespace quillon
