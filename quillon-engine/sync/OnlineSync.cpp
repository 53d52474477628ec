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
    if (stored->number(QStringLiteral("SyncRemote")) == 0) {
        finish({{SyncOutcome::Kind::SwitchedOff, {}}, {}, {}, {}});
        return;
    }
    try {
        m_run = std::make_unique<SyncRun>(*m_service, m_journal.snapshot(),
                                          [this](const SyncRun::Result &result) { finish(result); });
    } catch (const std::exception &e) {
        finish({{SyncOutcome::Kind::Failed, QString::fromLocal8Bit(e.what())}, {}, {}, {}});
        return;
    }
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
    SyncJournal::Applied applied;
    SyncOutcome outcome = result.outcome;
    if (outcome.ok() && m_run) {
        try {
            applied = m_journal.apply(m_run->snapshot(), result.subscriptions, result.reads, result.remote,
                                      m_clock());
            m_settings.setValue(kConsumer, kSection, kApi, m_service->apiAddress());
        } catch (const std::exception &e) {
            outcome = {SyncOutcome::Kind::Failed, QString::fromLocal8Bit(e.what())};
        }
    }
    record(outcome, applied);
    announce(applied);
    m_running = false;
    Q_EMIT runFinished(outcome.text());
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

void OnlineSync::announce(const SyncJournal::Applied &applied)
{
    for (const qint32 id : applied.added) {
        if (const auto bag = m_subscriptions.findItemBag(id))
            m_messenger.toConnected(EngineMessages::message(QStringLiteral("SubscriptionAdded"),
                                                            EngineMessages::addedPayload(**bag)));
    }
    // The main window refreshes its tree on a binding change; a removed subscription is unbound.
    for (const qint32 id : applied.removed)
        m_messenger.toConnected(
            EngineMessages::bindingChanged(kConsumer, QStringLiteral("OLCONSUMER"), false, id));
    m_changed(applied);
}

BagPtr OnlineSync::settingsBag() const
{
    BagPtr bag = SyncSettings(m_settings).read();
    bag->setText(kStatus, m_settings.value(kConsumer, kSection, kStatus).value_or(QString()));
    bag->setText(kTime, m_settings.value(kConsumer, kSection, kTime).value_or(QString()));
    return bag;
}

} // namespace quillon
