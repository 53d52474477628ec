#include "FeedScheduler.h"

#include "CoreLogging.h"
#include "EngineDefaults.h"
#include "SqlTransaction.h"
#include "SubscriptionStore.h"

#include <algorithm>

namespace quillon {

namespace {
// Long waits are cut so that a changed clock or setting is noticed within the hour.
constexpr qint64 kLongestWaitMs = 3600 * 1000;
// A due time that is already past after claiming would otherwise spin.
constexpr qint64 kShortestWaitMs = 1000;
} // namespace

FeedScheduler::FeedScheduler(EngineDatabase &db, SubscriptionStore &subscriptions, EngineDefaults &defaults,
                             const Clock &clock, Dispatch dispatch)
    : m_db(db), m_subscriptions(subscriptions), m_defaults(defaults), m_clock(clock),
      m_dispatch(std::move(dispatch))
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &FeedScheduler::runDue);
}

void FeedScheduler::start()
{
    m_started = true;
    poke();
}

void FeedScheduler::poke()
{
    if (m_started)
        m_timer.start(0);
}

void FeedScheduler::runDue()
{
    QList<qint32> ready;
    try {
        ready = claimDue();
    } catch (const std::exception &e) {
        qCWarning(lcCore) << "cannot schedule updates:" << e.what();
    }
    for (const qint32 id : std::as_const(ready)) {
        m_inFlight.insert(id);
        m_dispatch(id);
    }
    armTimer();
}

QList<qint32> FeedScheduler::claimDue()
{
    const QDateTime now = m_clock();
    QList<qint32> ready;
    SqlTransaction transaction(m_db);
    for (const SubscriptionStore::Due &due : m_subscriptions.dueForUpdate(now)) {
        m_subscriptions.setNextUpdate(due.id, now.addSecs(m_defaults.updateFrequency(due.updateFreq)));
        // Made due again while its fetch runs: once is enough, the next one follows it.
        if (m_inFlight.contains(due.id))
            m_dueAgain.insert(due.id);
        else
            ready.append(due.id);
    }
    transaction.commit();
    if (!ready.isEmpty())
        qCDebug(lcCore) << ready.size() << "subscriptions due," << m_inFlight.size() << "already in flight";
    return ready;
}

bool FeedScheduler::finished(qint32 subscriptionId)
{
    m_inFlight.remove(subscriptionId);
    return m_dueAgain.remove(subscriptionId);
}

void FeedScheduler::armTimer()
{
    if (!m_started)
        return;
    QDateTime next;
    try {
        next = m_subscriptions.earliestNextUpdate();
    } catch (const std::exception &e) {
        qCWarning(lcCore) << "cannot find the next update:" << e.what();
    }
    const qint64 wait = next.isValid() ? m_clock().msecsTo(next) : kLongestWaitMs;
    m_timer.start(int(std::clamp(wait, kShortestWaitMs, kLongestWaitMs)));
}

int FeedScheduler::msUntilNextCheck() const
{
    return m_timer.isActive() ? m_timer.remainingTime() : -1;
}

} // namespace quillon
