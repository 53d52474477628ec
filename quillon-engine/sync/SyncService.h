#pragma once

#include "SyncOutcome.h"
#include "SyncTypes.h"

#include <QStringList>

#include <functional>

namespace quillon {

// The account a run logs on with, as the online page stored it.
struct SyncAccount
{
    QString server;
    QString user;
    QString password;
    // The API address that answered last time, tried first.
    QString knownApi;
};

// One sync protocol, spoken asynchronously from the event loop. Every call ends in exactly one
// of its own callback or the failure handler, which ends the run.
class SyncService
{
public:
    using Done = std::function<void()>;
    using Failed = std::function<void(const SyncOutcome &outcome)>;

    virtual ~SyncService() = default;

    void onFailure(Failed failed) { m_failed = std::move(failed); }

    // Finds the API behind the address and logs on.
    virtual void open(const SyncAccount &account, Done done) = 0;
    virtual void feeds(std::function<void(const QList<RemoteFeed> &)> done) = 0;
    // A feed the server does not take is logged and skipped, not a failure.
    virtual void subscribe(const LocalSubscription &subscription, Done done) = 0;
    virtual void unsubscribe(const RemoteFeed &feed, Done done) = 0;
    // The articles of these feeds (IDs of the server's), with their read state.
    virtual void articles(const QStringList &feedIds,
                          std::function<void(const QList<RemoteArticle> &)> done) = 0;
    virtual void setRead(const QStringList &articleIds, bool read, Done done) = 0;
    // The API address that answered; empty before open() succeeded.
    [[nodiscard]] virtual QString apiAddress() const = 0;

protected:
    void fail(const SyncOutcome &outcome)
    {
        if (m_failed)
            m_failed(outcome);
    }

private:
    Failed m_failed;
};

} // namespace quillon
