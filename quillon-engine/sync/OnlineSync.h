#pragma once

#include "EngineMessenger.h"
#include "PropertyBag.h"
#include "SlicedWork.h"
#include "SyncJournal.h"
#include "SyncRun.h"
#include "SyncService.h"

#include <QDateTime>
#include <QObject>
#include <QTimer>

#include <functional>
#include <memory>

namespace quillon {

class EngineLog;
class SettingsStore;
class SubscriptionStore;

// Runs the online synchronisation the stored settings ask for: every "SyncFrequency" seconds
// (at least 900) and on request, one run at a time, its network work on the event loop so
// client calls are answered meanwhile. Each outcome is kept beside the settings and logged.
class OnlineSync : public QObject
{
    Q_OBJECT
public:
    using Clock = std::function<QDateTime()>;
    // A run changed subscriptions or read marks here: fetch and schedule again, tell consumers.
    // Called in parts: the counts a few subscriptions at a time, the subscriptions at the end.
    using Changed = std::function<void(const SyncJournal::Applied &applied)>;

    static constexpr int kShortestFrequency = 900;
    // Subscriptions whose counts one message tells, about half a millisecond's work.
    static constexpr qsizetype kCountsAtOnce = 25;

    OnlineSync(SyncJournal journal, SettingsStore &settings, SubscriptionStore &subscriptions, EngineLog &log,
               const Clock &clock, EngineMessenger messenger, Changed changed);
    ~OnlineSync() override;

    // Replaces the protocol (tests), before any run.
    void setService(std::unique_ptr<SyncService> service);
    // Reads the settings again: the queue's switch and the timer.
    void follow();
    // Starts a run now, or right after the one under way.
    void runNow();
    // The five settings plus "SyncStatus" (the last outcome, "" before any) and "SyncTime"
    // (when it ended, ISO-8601 UTC).
    [[nodiscard]] BagPtr settingsBag() const;
    [[nodiscard]] bool isRunning() const { return m_run != nullptr && m_running; }

Q_SIGNALS:
    void runFinished(const QString &outcome);

private:
    void start();
    void startRun(SyncSnapshotReader &reader);
    void finish(const SyncRun::Result &result);
    [[nodiscard]] bool applySome(const QDeadlineTimer &deadline);
    // Tells consumers what the run added and removed here, a slice at a time.
    [[nodiscard]] bool announceSome(const QDeadlineTimer &deadline);
    // False when nothing is left.
    bool announceNext();
    void announceAdded(qint32 id);
    void conclude();
    void record(const SyncOutcome &outcome, const SyncJournal::Applied &applied);
    [[nodiscard]] SyncAccount account() const;

    SyncJournal m_journal;
    SettingsStore &m_settings;
    SubscriptionStore &m_subscriptions;
    EngineLog &m_log;
    const Clock &m_clock;
    EngineMessenger m_messenger;
    Changed m_changed;
    std::unique_ptr<SyncService> m_service;
    std::unique_ptr<SyncRun> m_run;
    QTimer m_timer;
    bool m_running = false;
    bool m_again = false;
    // The run that ended, while its changes here are applied.
    SyncOutcome m_outcome;
    SyncJournal::Pending m_pending;
    SyncJournal::Applied m_applied;
    qsizetype m_announced = 0;
    QList<qint32> m_counts; // subscriptions whose counts are still to tell
    SlicedWork m_slices;
};

} // namespace quillon
