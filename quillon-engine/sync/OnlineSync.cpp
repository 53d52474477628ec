#include "OnlineSync.h"

#include "EngineLog.h"
#include "EngineMessages.h"
#include "GeneralSettingKeys.h"
#include "SettingsStore.h"
#include "SubscriptionStore.h"
#include "SyncLogging.h"
#include "SyncSettings.h"
#include "TinyRssService.h"

Q_LOGGING_CATEGORY(lcSync, "corvell.quillon.engine.sync")

namespace quillon {

namespace {
const QString &kConsumer = SyncSettings::kConsumer;
const QString &kSection = SyncSettings::kSection;
const QString kStatus = QStringLiteral("SyncStatus");
const QString kTime = QStringLiteral("SyncTime");
const QString kApi = QStringLiteral("SyncApiAddress");
} // namespace

OnlineSync::OnlineSync(SyncJournal journal, SettingsStore &settings, SubscriptionStore &subscriptions,
                       EngineLog &log, const Clock &clock, EngineMessenger messenger, Changed changed)
    : m_journal(journal), m_settings(settings), m_subscriptions(subscriptions), m_log(log), m_clock(clock),
      m_messenger(std::move(messenger)), m_changed(std::move(changed)),
      m_service(std::make_unique<TinyRssService>())
{
    m_timer.setTimerType(Qt::VeryCoarseTimer);
    connect(&m_timer, &QTimer::timeout, this, &OnlineSync::runNow);
}

OnlineSync::~OnlineSync() = default;

void OnlineSync::setService(std::unique_ptr<SyncService> service)
{
    m_service = std::move(service);
}

void OnlineSync::follow()
{
    const BagPtr stored = SyncSettings(m_settings).read();
    const bool on = stored->number(QStringLiteral("SyncRemote")) != 0;
    m_journal.setQueueing(on);
    const qint32 frequency = stored->number(QStringLiteral("SyncFrequency"));
    const int seconds = std::max(kShortestFrequency, frequency > 0 ? frequency : 3600);
    if (on)
        m_timer.start(seconds * 1000);
    else
        m_timer.stop();
}

void OnlineSync::runNow()
{
    if (m_running) {
        m_again = true;
        return;
    }
    m_running = true;
    // From the event loop, so the request that asked is answered first.
    QTimer::singleShot(0, this, &OnlineSync::start);
}

void OnlineSync::start()
{
    const BagPtr stored = SyncSettings(m_settings).read();
    if (stored->number(QStringLiteral("SyncRemote")) == 0)
        return finish({{SyncOutcome::Kind::SwitchedOff, {}}, {}, {}, {}});
    auto reader = std::make_shared<SyncSnapshotReader>(m_journal.snapshotReader());
    m_slices.run([reader](const QDeadlineTimer &deadline) { return reader->readSome(deadline); },
                 [this, reader] { startRun(*reader); });
}

void OnlineSync::startRun(SyncSnapshotReader &reader)
{
    if (!reader.error().isEmpty())
        return finish({{SyncOutcome::Kind::Failed, reader.error()}, {}, {}, {}});
    m_run = std::make_unique<SyncRun>(
        *m_service, reader.take(), [this](const QList<qint32> &ids) { return m_journal.articlesOf(ids); },
        [this](const SyncRun::Result &result) { finish(result); });
    m_run->start(account());
}

SyncAccount OnlineSync::account() const
{
    const BagPtr stored = SyncSettings(m_settings).read();
    return {stored->text(QStringLiteral("SyncServer")), stored->text(QStringLiteral("SyncUser")),
            stored->text(QStringLiteral("SyncPassword")),
            m_settings.value(kConsumer, kSection, kApi).value_or(QString())};
}

void OnlineSync::finish(const SyncRun::Result &result)
{
    m_outcome = result.outcome;
    m_applied = {};
    m_announced = 0;
    if (!m_outcome.ok() || !m_run)
        return conclude();
    m_pending =
        SyncJournal::pending(m_run->snapshot(), result.subscriptions, result.reads, result.remote, m_clock());
    m_slices.run([this](const QDeadlineTimer &deadline) { return applySome(deadline); },
                 [this] {
                     m_counts = m_applied.countsChanged.values();
                     m_slices.run([this](const QDeadlineTimer &deadline) { return announceSome(deadline); },
                                  [this] { conclude(); });
                 });
}

bool OnlineSync::applySome(const QDeadlineTimer &deadline)
{
    try {
        if (!m_journal.applySome(m_pending, m_applied, deadline))
            return false;
        m_settings.setValue(kConsumer, kSection, kApi, m_service->apiAddress());
    } catch (const std::exception &e) {
        m_outcome = {SyncOutcome::Kind::Failed, QString::fromLocal8Bit(e.what())};
    }
    return true;
}

bool OnlineSync::announceSome(const QDeadlineTimer &deadline)
{
    do {
        if (!announceNext())
            return true;
    } while (!deadline.hasExpired());
    return false;
}

bool OnlineSync::announceNext()
{
    const QList<qint32> &added = m_applied.added;
    const QList<qint32> &removed = m_applied.removed;
    if (m_announced < added.size() + removed.size()) {
        const qsizetype index = m_announced++;
        if (index < added.size())
            announceAdded(added.at(index));
        else // The main window refreshes its tree on a binding change; a removed subscription is unbound.
            m_messenger.toConnected(EngineMessages::bindingChanged(kConsumer, QStringLiteral("OLCONSUMER"),
                                                                   false, removed.at(index - added.size())));
        return true;
    }
    if (m_counts.isEmpty())
        return false;
    // The counts of a few subscriptions at a time; the last part brings the read marks to delivery.
    const qsizetype size = std::min(m_counts.size(), kCountsAtOnce);
    SyncJournal::Applied part;
    part.countsChanged = QSet<qint32>(m_counts.cend() - size, m_counts.cend());
    m_counts.resize(m_counts.size() - size);
    if (m_counts.isEmpty())
        part.readChanged = m_applied.readChanged;
    m_changed(part);
    return true;
}

void OnlineSync::announceAdded(qint32 id)
{
    try {
        if (const auto bag = m_subscriptions.findItemBag(id))
            m_messenger.toConnected(EngineMessages::message(QStringLiteral("SubscriptionAdded"),
                                                            EngineMessages::addedPayload(**bag)));
    } catch (const std::exception &e) {
        qCWarning(lcSync) << "cannot announce subscription" << id << e.what();
    }
}

void OnlineSync::conclude()
{
    // Read counts went in parts already.
    m_changed({m_applied.added, m_applied.removed, 0, {}});
    record(m_outcome, m_applied);
    m_pending = {};
    m_running = false;
    Q_EMIT runFinished(m_outcome.text());
    if (std::exchange(m_again, false))
        runNow();
}

void OnlineSync::record(const SyncOutcome &outcome, const SyncJournal::Applied &applied)
{
    const QDateTime now = m_clock();
    QString line = QStringLiteral("Online synchronisation: ") + outcome.text();
    if (outcome.ok())
        line += QStringLiteral("; %1 subscriptions added here, %2 removed here, %3 read marks taken")
                    .arg(applied.added.size())
                    .arg(applied.removed.size())
                    .arg(applied.readChanged);
    try {
        m_settings.setValue(kConsumer, kSection, kStatus, outcome.text());
        m_settings.setValue(kConsumer, kSection, kTime, now.toUTC().toString(Qt::ISODateWithMs));
        m_log.write(outcome.ok() ? 1 : GeneralSettingKeys::kLineError, kConsumer, line, now);
    } catch (const std::exception &e) {
        qCWarning(lcSync) << "cannot keep the outcome:" << e.what();
    }
    qCInfo(lcSync).noquote() << line;
}

BagPtr OnlineSync::settingsBag() const
{
    BagPtr bag = SyncSettings(m_settings).read();
    bag->setText(kStatus, m_settings.value(kConsumer, kSection, kStatus).value_or(QString()));
    bag->setText(kTime, m_settings.value(kConsumer, kSection, kTime).value_or(QString()));
    return bag;
}

} // namespace quillon
