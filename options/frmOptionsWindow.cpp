#include "frmOptionsWindow.h"

#include "CLog.h"
#include "ConfigPage.h"
#include "ConsumerSettings.h"
#include "DialogAnswer.h"
#include "EngineNames.h"
#include "RegistrySettings.h"
#include "StandardDialogs.h"
#include "localization.h"
#include "ui_frmOptionsWindow.h"

#include <QAbstractButton>
#include <QFile>
#include <QLoggingCategory>
#include <QScreen>
#include <QSignalBlocker>

Q_LOGGING_CATEGORY(lcOptions, "corvell.options")

namespace {
const QString kCurrentModuleKey = QStringLiteral("CurrentOptionsModule");
const QString kNetworkPane = QStringLiteral("NetworkUI1");

// The pages' operations are called by name: the names are the contract.
bool CallSafeToApply(ConfigPage *page)
{
    bool safe = false;
    QMetaObject::invokeMethod(page, "SafeToApply", Q_RETURN_ARG(bool, safe));
    return safe;
}

QString CallSendPropMessage(ConfigPage *page, const QString &name, const QString &value)
{
    QString answer;
    QMetaObject::invokeMethod(page, "SendPropMessage", Q_RETURN_ARG(QString, answer), Q_ARG(QString, name),
                              Q_ARG(QString, value));
    return answer;
}
} // namespace

frmOptionsWindow::frmOptionsWindow(const OptionPageFactory &pages, QWidget *parent, ModuleTable modules)
    : QDialog(parent), ui(std::make_unique<Ui::frmOptionsWindow>()), m_factory(pages),
      m_modules(std::move(modules)), m_imagesFolder(QuillonDataFolder() + QStringLiteral("/Images"))
{
    ui->setupUi(this);
    connect(ui->grdModules, &QTableWidget::currentCellChanged, this, [this](int row) { OnRowChosen(row); });
    // With the network page in view, a click on the selected row brings the module's page back.
    connect(ui->grdModules, &QTableWidget::cellClicked, this, [this](int row) {
        if (m_networkShown)
            OnRowChosen(row);
    });
    connect(ui->cmdApply, &QPushButton::clicked, this, &frmOptionsWindow::OnApply);
    connect(ui->cmdOK, &QPushButton::clicked, this, &frmOptionsWindow::OnOK);
    connect(ui->cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
    for (QWidget *control : {static_cast<QWidget *>(ui->grdModules), static_cast<QWidget *>(ui->cmdOK),
                             static_cast<QWidget *>(ui->cmdApply), static_cast<QWidget *>(ui->cmdCancel),
                             static_cast<QWidget *>(this)})
        control->installEventFilter(this);
}

frmOptionsWindow::~frmOptionsWindow() = default;

// ---- The host contract -----------------------------------------------------------------

QString frmOptionsWindow::GetConsumerID() const
{
    return EngineNames::kConfigConsumer;
}

QString frmOptionsWindow::GetNewsSubscriptionType() const
{
    return EngineNames::kNewsClass;
}

void frmOptionsWindow::OnStatusChange()
{
    ui->cmdApply->setEnabled(true);
}

void frmOptionsWindow::EditConfiguration(qint32 subscriptionId, bool &handled)
{
    handled = false;
    if (subscriptionId != 0)
        return;
    if (m_addSubscription)
        m_addSubscription(this);
    if (ConfigPage *page = CurrentPage())
        CallSendPropMessage(page, QStringLiteral("Reload"), QStringLiteral("x"));
}

void frmOptionsWindow::SetHotHelp(const QString &text, const QString &warning)
{
    // This version shows one fixed line: the texts are dropped before the warning is looked at,
    // so the triangle stays hidden and the line keeps its place.
    Q_UNUSED(text);
    Q_UNUSED(warning);
    ui->lblHotHelp->setText(QStringLiteral("No Hot Help in v0.8"));
    ui->picWarningTriangle->setVisible(false);
}

void frmOptionsWindow::SetStatusText(const QString &text)
{
    if (auto *host = dynamic_cast<ConfigHost *>(m_host.data()))
        host->SetStatusText(text);
}

void frmOptionsWindow::SetBusy(bool busy)
{
    if (auto *host = dynamic_cast<ConfigHost *>(m_host.data()))
        host->SetBusy(busy);
}

QStringList frmOptionsWindow::Categories() const
{
    if (const auto *host = dynamic_cast<const ConfigHost *>(m_host.data()))
        return host->Categories();
    return {};
}

// ---- Opening ---------------------------------------------------------------------------

void frmOptionsWindow::showEvent(QShowEvent *event)
{
    FormLoad();
    QDialog::showEvent(event);
}

void frmOptionsWindow::FormLoad()
{
    if (std::exchange(m_loaded, true))
        return;
    m_loading = true;
    int openingRow = 0;
    try {
        openingRow = BuildModules();
    } catch (const std::exception &e) {
        qCWarning(lcOptions) << "the options window was not fully built:" << e.what();
    }
    m_current = 0;
    m_loading = false;
    MoveSelectionTo(openingRow);
    OnRowChosen(openingRow);
    adjustSize();
    if (const QScreen *screen = this->screen())
        move(screen->availableGeometry().center() - rect().center());
}

int frmOptionsWindow::BuildModules()
{
    SetCaptions();
    ui->cmdApply->setEnabled(false);
    ui->grdModules->setRowCount(m_modules.Count());
    const QString saved = m_client ? GetConsumerSetting(*m_client, kCurrentModuleKey, QString(),
                                                        EngineNames::kConfigConsumer, QString())
                                   : QString();
    for (int i = 1; i <= m_modules.Count(); ++i) {
        const CModuleRecord *module = m_modules.Module(i);
        if (!module) {
            CLog::SaveMessage(QStringLiteral("OptionsWindow.frmMainWindow.Load"),
                              QStringLiteral("Error occurred.  Reason: theModule is Nothing at index ") +
                                  QString::number(i));
            continue;
        }
        BuildRow(i - 1, *module);
        MakePage(module->ModulePaneName(), true);
    }
    MakePage(kNetworkPane, false);
    return m_modules.OpeningRow(saved);
}

void frmOptionsWindow::SetCaptions()
{
    ui->cmdOK->setText(GetLocalizedString(26));
    ui->cmdCancel->setText(GetLocalizedString(27));
    ui->cmdApply->setText(GetLocalizedString(28));
    m_hotHelp = {{ui->grdModules->objectName(), GetLocalizedString(60)},
                 {ui->cmdOK->objectName(), GetLocalizedString(63)},
                 {ui->cmdApply->objectName(), GetLocalizedString(64)},
                 {ui->cmdCancel->objectName(), GetLocalizedString(65)}};
}

void frmOptionsWindow::BuildRow(int row, const CModuleRecord &module)
{
    auto *item = new QTableWidgetItem(module.ModuleDisplayName());
    item->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled);
    // A missing or unreadable picture leaves the row with its text.
    const QString icon =
        m_imagesFolder + QLatin1Char('/') + module.ModuleRegistryName() + QStringLiteral(".gif");
    if (QFile::exists(icon))
        item->setIcon(QIcon(icon));
    ui->grdModules->setItem(row, 0, item);
}

void frmOptionsWindow::MakePage(const QString &paneName, bool missingIsAnError)
{
    ConfigPage *page = m_factory.Create(paneName, ui->fraPages, m_client);
    if (!page) {
        if (missingIsAnError)
            ShowAlert(this, QStringLiteral("element not found"), QString());
        return;
    }
    // Every page shares one place; only the current module's is visible.
    ui->layoutPages->addWidget(page, 0, 0);
    page->hide();
    QMetaObject::invokeMethod(page, "SetHost", Q_ARG(ConfigHost *, this));
    m_pages.insert(paneName, page);
    if (auto *network = page->findChild<QAbstractButton *>(QStringLiteral("cmdNetworkSettings")))
        connect(network, &QAbstractButton::clicked, this, &frmOptionsWindow::ShowNetworkPane);
}

void frmOptionsWindow::CentreOver(const QWidget *host)
{
    if (!host)
        return;
    const QRect hostArea = host->frameGeometry();
    move(hostArea.left() + hostArea.width() / 2 - frameGeometry().width() / 2,
         hostArea.top() + hostArea.height() / 2 - frameGeometry().height() / 2);
}

// ---- Moving between modules ------------------------------------------------------------

void frmOptionsWindow::OnRowChosen(int row)
{
    if (m_loading)
        return;
    const int chosen = row + 1;
    if (m_networkShown && chosen == m_current) {
        if (!ui->cmdApply->isEnabled() || SettleUnappliedChanges())
            SwitchTo(chosen);
        return;
    }
    switch (ModuleTable::OnClick(chosen, m_current, ui->cmdApply->isEnabled())) {
    case ModuleTable::Click::Nothing:
        return;
    case ModuleTable::Click::Ask:
        if (!SettleUnappliedChanges()) {
            MoveSelectionTo(m_current - 1);
            return;
        }
        break;
    case ModuleTable::Click::Switch:
        break;
    }
    SwitchTo(chosen);
}

bool frmOptionsWindow::SettleUnappliedChanges()
{
    const int answer =
        AskDoYouWantToSave(this, QStringLiteral("Save your changes now?"),
                           QStringLiteral("You have made settings changes to this module. You must\r\n"
                                          "save these changes before moving on, or they will be lost."));
    switch (ModuleTable::OnAnswer(fromMessageBoxCode(answer))) {
    case ModuleTable::Answer::ApplyThenSwitch:
        ApplyCurrentModule();
        return true;
    case ModuleTable::Answer::ReloadThenSwitch:
        if (ConfigPage *page = ShownPage())
            QMetaObject::invokeMethod(page, "LoadValues");
        return true;
    case ModuleTable::Answer::Stay:
        break;
    }
    return false;
}

void frmOptionsWindow::SwitchTo(int module)
{
    if (ConfigPage *page = ShownPage())
        page->hide();
    m_networkShown = false;
    m_current = module;
    if (ConfigPage *page = CurrentPage())
        page->show();
    ui->cmdApply->setEnabled(false);
}

void frmOptionsWindow::MoveSelectionTo(int row)
{
    const QSignalBlocker quiet(ui->grdModules);
    ui->grdModules->setCurrentCell(row, 0);
    if (QTableWidgetItem *item = ui->grdModules->item(row, 0))
        ui->grdModules->scrollToItem(item, QAbstractItemView::PositionAtTop);
}

ConfigPage *frmOptionsWindow::CurrentPage() const
{
    const CModuleRecord *module = m_modules.Module(m_current);
    return module ? Page(module->ModulePaneName()) : nullptr;
}

ConfigPage *frmOptionsWindow::ShownPage() const
{
    return m_networkShown ? Page(kNetworkPane) : CurrentPage();
}

void frmOptionsWindow::ShowNetworkPane()
{
    ConfigPage *network = Page(kNetworkPane);
    if (!network || m_networkShown)
        return;
    // Unapplied changes of the module's page are settled first, as on a change of module.
    if (ui->cmdApply->isEnabled() && !SettleUnappliedChanges())
        return;
    if (ConfigPage *page = CurrentPage())
        page->hide();
    m_networkShown = true;
    network->show();
    ui->cmdApply->setEnabled(false);
}

// ---- Applying and closing --------------------------------------------------------------

bool frmOptionsWindow::ApplyCurrentModule()
{
    const CModuleRecord *module = m_modules.Module(m_current);
    ConfigPage *page = ShownPage();
    if (!module || !page)
        return true;
    // The network page has no check of its own before it applies.
    if (m_networkShown || !ModuleTable::ValidatesBeforeApply(*module) || CallSafeToApply(page))
        QMetaObject::invokeMethod(page, "Apply");
    // Success in every case: a refused page keeps its values but Apply goes off all the same.
    return true;
}

void frmOptionsWindow::OnApply()
{
    if (ApplyCurrentModule())
        ui->cmdApply->setEnabled(false);
}

void frmOptionsWindow::OnOK()
{
    if (ui->cmdApply->isEnabled() && ApplyCurrentModule())
        ui->cmdApply->setEnabled(false);
    accept();
}

void frmOptionsWindow::done(int result)
{
    Unload();
    QDialog::done(result);
}

void frmOptionsWindow::Unload()
{
    if (!m_loaded || std::exchange(m_unloaded, true))
        return;
    const CModuleRecord *current = m_modules.Module(m_current);
    try {
        if (m_client && current)
            SetConsumerSetting(*m_client, EngineNames::kConfigConsumer, QString(), kCurrentModuleKey,
                               current->ModuleRegistryName());
    } catch (const std::exception &e) {
        qCWarning(lcOptions) << "the module shown last was not stored:" << e.what();
    }
    for (int i = 1; i <= m_modules.Count(); ++i) {
        const CModuleRecord *module = m_modules.Module(i);
        ConfigPage *page = module ? Page(module->ModulePaneName()) : nullptr;
        if (page && CallSendPropMessage(page, QStringLiteral("ModuleConfiguredCorrectly"), QString()) ==
                        QLatin1String("no"))
            PutRegistrySetting(QStringLiteral("Quill On"), EngineNames::kConfigConsumer,
                               module->ModuleRegistryName(), QStringLiteral("False"));
    }
    m_client.reset();
    m_host = nullptr;
}

// ---- Hot help of the window's own controls ---------------------------------------------

bool frmOptionsWindow::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Enter)
        ShowOwnHotHelp(watched == this ? QString() : watched->objectName());
    return QDialog::eventFilter(watched, event);
}

void frmOptionsWindow::ShowOwnHotHelp(const QString &controlName)
{
    if (controlName.isEmpty()) {
        m_lastHotHelpKey.clear();
        SetHotHelp(QString(), QString());
    } else if (controlName != m_lastHotHelpKey) {
        m_lastHotHelpKey = controlName;
        SetHotHelp(m_hotHelp.value(controlName), QString());
    } else {
        return;
    }
    if (ConfigPage *page = CurrentPage())
        CallSendPropMessage(page, QStringLiteral("ResetHelpText"), QString());
}
