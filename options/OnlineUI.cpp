#include "OnlineUI.h"

#include "EngineClientBag.h"
#include "FieldError.h"
#include "FormControls.h"
#include "StandardDialogs.h"
#include "TimeField.h"
#include "ui_OnlineUI.h"

#include <QDateTime>
#include <QLocale>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcOnline, "corvell.options.online")

namespace {
constexpr qint32 kMinimumSyncSeconds = 900;
// A run that has not ended after two minutes shows its outcome when the page is opened again.
constexpr int kStatusPolls = 120;
const QString kFrequencyField = QStringLiteral("the synchronisation frequency");
} // namespace

OnlineUI::OnlineUI(QWidget *parent) : ConfigPage(parent), ui(std::make_unique<Ui::OnlineUI>())
{
    ui->setupUi(this);
    using C = FieldCodec;
    Bind({
        {.control = "chkOnlineEnabled",
         .store = &m_sync,
         .key = "SyncRemote",
         .defaultValue = "0",
         .codec = C::Flag,
         .hotHelp = "Keep your subscriptions the same on every computer you use."},
        {.control = "txtOnlineURL",
         .store = &m_sync,
         .key = "SyncServer",
         .hotHelp = "The online service's address."},
        {.control = "txtOnlineUsername",
         .store = &m_sync,
         .key = "SyncUser",
         .hotHelp = "Your account's name."},
        {.control = "txtOnlinePassword",
         .store = &m_sync,
         .key = "SyncPassword",
         .codec = C::Secret,
         .hotHelp = "Your account's password, at least four characters."},
        {.control = "txtUpdateFreq",
         .store = &m_sync,
         .key = "SyncFrequency",
         .defaultValue = "3600",
         .codec = C::Seconds,
         .hotHelp = "How often to synchronise; at least 15 minutes.",
         .unit = "cboUpdateFreq",
         .label = kFrequencyField},
    });
    SetHotHelpText(QStringLiteral("cmdSyncNow"),
                   QStringLiteral("Synchronise now, with the settings stored."));
    connect(ui->chkOnlineEnabled, &QCheckBox::toggled, this, &OnlineUI::EnableOnline);
    connect(ui->cmdSyncNow, &QPushButton::clicked, this, &OnlineUI::SyncNow);
    m_statusPoll.setInterval(1000);
    connect(&m_statusPoll, &QTimer::timeout, this, &OnlineUI::PollSyncStatus);
    LoadValues();
}

OnlineUI::~OnlineUI() = default;

void OnlineUI::FieldsLoaded()
{
    EnableOnline();
    try {
        ShowSyncStatus();
    } catch (const quillon::EngineError &error) {
        qCWarning(lcOnline) << "the synchronisation's outcome cannot be read:" << error.message();
    }
}

QString OnlineUI::ShowSyncStatus()
{
    const auto stored =
        m_sync.Read({{QStringLiteral("SyncStatus"), QString()}, {QStringLiteral("SyncTime"), QString()}});
    const QString status = stored.value(QStringLiteral("SyncStatus"));
    const QString time = stored.value(QStringLiteral("SyncTime"));
    const QDateTime when = QDateTime::fromString(time, Qt::ISODate).toLocalTime();
    ui->lblSyncStatus->setText(status.isEmpty()
                                   ? QStringLiteral("Not synchronised yet.")
                                   : QStringLiteral("Last synchronisation, %1: %2")
                                         .arg(QLocale().toString(when, QLocale::ShortFormat), status));
    return time;
}

void OnlineUI::PollSyncStatus()
{
    try {
        if (ShowSyncStatus() != m_runBefore || --m_pollsLeft <= 0)
            m_statusPoll.stop();
    } catch (const quillon::EngineError &error) {
        qCWarning(lcOnline) << "the synchronisation's outcome cannot be read:" << error.message();
        m_statusPoll.stop();
    }
}

void OnlineUI::EnableOnline()
{
    const bool on = ui->chkOnlineEnabled->isChecked();
    FormControls::SetEnabled({ui->lblOnlineURL, ui->txtOnlineURL, ui->lblOnlineUsername,
                              ui->txtOnlineUsername, ui->lblOnlinePassword, ui->txtOnlinePassword,
                              ui->lblUpdateFreq, ui->txtUpdateFreq, ui->cboUpdateFreq, ui->cmdSyncNow},
                             on);
}

QString OnlineUI::Problem() const
{
    if (ui->txtOnlineUsername->text().isEmpty())
        return QStringLiteral("Online user name needs to be at least one character.");
    if (ui->txtOnlinePassword->text().size() < 4)
        return QStringLiteral("Online password needs to be at least four characters.");
    try {
        if (TimeField::ToSeconds(ui->txtUpdateFreq->text(), ui->cboUpdateFreq->currentIndex(),
                                 kFrequencyField) < kMinimumSyncSeconds)
            return QStringLiteral("Corvell online update frequency can not be less than 15 minutes.");
    } catch (const FieldError &) {
        // Apply explains a number it cannot read.
    }
    return QString();
}

bool OnlineUI::SafeToApply()
{
    if (const QString problem = Problem(); !problem.isEmpty())
        ShowAlert(window(), problem, QString());
    return true;
}

void OnlineUI::SyncNow()
{
    try {
        m_runBefore = ShowSyncStatus();
        EngineClientBag::Client()->SyncNow();
        ui->lblSyncStatus->setText(QStringLiteral("Synchronising..."));
        m_pollsLeft = kStatusPolls;
        m_statusPoll.start();
    } catch (const quillon::EngineError &error) {
        qCWarning(lcOnline) << "synchronisation could not be started:" << error.message();
    }
}
