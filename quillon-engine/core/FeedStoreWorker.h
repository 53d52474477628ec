#pragma once

#include "FetchResult.h"
#include "ParsedFeed.h"

#include <QDateTime>
#include <QList>
#include <QMutex>
#include <QObject>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <deque>
#include <functional>
#include <memory>

namespace quillon {

// Stores what fetches brought on a thread of its own, over its own connection to the engine's
// database, so that a consumer's call never waits behind a feed being stored: WAL lets the
// core's connection read beside it. Work runs in the order it was handed in; what has gathered
// meanwhile (at most kBatch feeds) is stored in one transaction, and reported after its commit.
class FeedStoreWorker
{
public:
    // Worked out on the core's thread when the fetch began: seconds, 0 keeps articles.
    struct Plan
    {
        qint32 readAge = 0;
        qint32 unreadAge = 0;
        qint32 frequency = 0;
        QDateTime now;
    };
    struct Outcome
    {
        qint32 subscriptionId = 0;
        // Empty when the subscription was removed meanwhile.
        QString status;
        bool promptForDownload = false;
        bool loginRequired = false;
        // Articles were stored or deleted: consumers may have deliveries waiting.
        bool articlesChanged = false;
        // Of them, some brought enclosures: the media consumer may have downloads waiting.
        bool newEnclosures = false;
        // A feed was read and stored, which may have given the subscription its title; otherwise
        // ("Not modified", a failure) only the status can have changed.
        bool feedStored = false;
    };
    // Called on the worker's thread with the outcomes of one commit, in order; the receiver
    // passes them on to its own thread.
    using Report = std::function<void(const QList<Outcome> &)>;
    // Feeds per transaction at most: one commit instead of many, yet short for the core's own
    // writes waiting on the lock.
    static constexpr int kBatch = 16;
    // How long the first feed of a burst waits for others to share its commit (a full batch does
    // not wait): stored as each came, a burst of fetches made commits of two feeds, each writing
    // the same index pages again and waking the core's thread.
    static constexpr int kGatherMs = 20;

    FeedStoreWorker(QString databasePath, Report report);
    // Drops the work not begun yet and closes the connection on its thread.
    ~FeedStoreWorker();
    FeedStoreWorker(const FeedStoreWorker &) = delete;
    FeedStoreWorker &operator=(const FeedStoreWorker &) = delete;

    // May be called from any thread.
    void storeFeed(qint32 subscriptionId, const Plan &plan, FetchResult result, ParsedFeed feed);
    // An update that brought no document: status, dates and age deletion. loginRequired is
    // passed on in the report, so the request for a login follows the commit.
    void recordStatus(qint32 subscriptionId, const Plan &plan, const QString &status,
                      bool loginRequired = false);

    // "OK: 20 items, 3 new", or the parse error and what was kept.
    [[nodiscard]] static QString statusOf(const ParsedFeed &feed, int added);

private:
    struct Stores;
    // One feed's store work, run inside a transaction; safe to run again after a rollback.
    struct Work
    {
        std::function<Outcome(Stores &)> run;
        // Reported when it fails; an empty status becomes "Error: " and the reason.
        Outcome failed;
    };

    void post(Work work);
    void drain();
    [[nodiscard]] QList<Outcome> runBatch(const QList<Work> &batch);
    [[nodiscard]] Stores &stores();
    [[nodiscard]] static Outcome store(Stores &s, qint32 subscriptionId, const Plan &plan,
                                       const FetchResult &result, const ParsedFeed &feed);
    // Answers how many articles went.
    static int purgeOld(Stores &s, qint32 subscriptionId, const Plan &plan);

    QString m_databasePath;
    Report m_report;
    QThread m_thread;
    QObject m_context;                // lives on m_thread; work is posted to it
    QTimer m_gather;                  // lives on m_thread; kGatherMs after a first feed
    std::unique_ptr<Stores> m_stores; // made and destroyed on m_thread
    std::atomic_bool m_stopping = false;
    QMutex m_mutex; // guards the two below
    std::deque<Work> m_waiting;
    bool m_drainPosted = false;
};

} // namespace quillon
