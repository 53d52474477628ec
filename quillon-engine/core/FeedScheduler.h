#pragma once

#include <QDateTime>
#include <QObject>
#include <QSet>
#include <QTimer>

#include <functional>

namespace quillon {

class EngineDatabase;
class EngineDefaults;
class SubscriptionStore;

// Decides when each subscription is fetched. One timer waits for the earliest NEXTUPDATETIME;
// when it fires, every subscription due is claimed (its next time moved on by its frequency,
// so nothing is handed out twice) and handed to dispatch.
class FeedScheduler : public QObject
{
    Q_OBJECT
public:
    using Clock = std::function<QDateTime()>;
    using Dispatch = std::function<void(qint32 subscriptionId)>;

    FeedScheduler(EngineDatabase &db, SubscriptionStore &subscriptions, EngineDefaults &defaults,
                  const Clock &clock, Dispatch dispatch);

    // Until started the engine fetches nothing on its own.
    void start();
    [[nodiscard]] bool isStarted() const { return m_started; }
    // Something may have become due: look again once control is back in the event loop.
    void poke();
    // Hands out everything due by the clock now, started or not.
    void runDue();
    // A fetch has ended. True when the subscription was made due again meanwhile.
    [[nodiscard]] bool finished(qint32 subscriptionId);
    [[nodiscard]] int inFlight() const { return int(m_inFlight.size()); }
    // Milliseconds until the timer fires; -1 when it is not waiting.
    [[nodiscard]] int msUntilNextCheck() const;

private:
    [[nodiscard]] QList<qint32> claimDue();
    void armTimer();

    EngineDatabase &m_db;
    SubscriptionStore &m_subscriptions;
    EngineDefaults &m_defaults;
    const Clock &m_clock;
    Dispatch m_dispatch;
    QTimer m_timer;
    QSet<qint32> m_inFlight;
    QSet<qint32> m_dueAgain;
    bool m_started = false;
};

} // namespace quillon
