#include "frmMainWindow.h"

#include "AddProgress.h"
#include "CLog.h"
#include "ConsumerSettings.h"
#include "DialogAnswer.h"
#include "EngineNames.h"
#include "GeneralSettingKeys.h"
#include "HandlerNames.h"
#include "ItemClass.h"
#include "MainWindowSettings.h"
#include "QLUtils.h"
#include "RegistrySettings.h"
#include "StandardDialogs.h"
#include "SubscriptionSettingsEditor.h"
#include "categoriesUtils.h"
#include "commonUtils.h"
#include "frmAbout.h"
#include "frmLogWindow.h"
#include "localization.h"
#include "ui_frmMainWindow.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QLabel>
#include <QLoggingCategory>
#include <QScopedValueRollback>
#include <QScreen>

Q_LOGGING_CATEGORY(lcMainWindow, "corvell.mainwindow")

using namespace categoriesUtils;

namespace {
using EngineNames::kConfigConsumer;
const QString kLoadLog = QStringLiteral("Main window load");
constexpr int kSaveSizeDelayMs = 500;

} // namespace

frmMainWindow::frmMainWindow(QWidget *parent)
    : QWidget(parent), ui(std::make_unique<Ui::frmMainWindow>()), m_router(*this, *this, this)
{
    ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose, false);
    SetupViews();
    // Titles, addresses and statuses come from feeds and servers: markup in them is shown, never drawn.
    for (QLabel *label : findChildren<QLabel *>())
        label->setTextFormat(Qt::PlainText);
    ConnectCommands();
    m_sizeSaveTimer.setSingleShot(true);
    m_sizeSaveTimer.setInterval(kSaveSizeDelayMs);
    connect(&m_sizeSaveTimer, &QTimer::timeout, this, &frmMainWindow::SaveWindowSize);
    // A run of adds reports its count while under way and its outcome when the last answer is in.
    connect(&AddProgress::Instance(), &AddProgress::CountChanged, this, &frmMainWindow::SetStatusText);
    connect(&AddProgress::Instance(), &AddProgress::Finished, this, &frmMainWindow::SetStatusText);
}

frmMainWindow::~frmMainWindow()
{
    while (m_busyDepth > 0)
        SetBusy(false);
}

void frmMainWindow::SetupViews()
{
    m_treeControl = new SubscriptionTreeController(m_tree, ui->subsTree, m_router, this);
    m_treeControl->SetEditGate([this](bool allowCancel) { return CommitEdits(allowCancel); });
    connect(m_treeControl, &SubscriptionTreeController::NodeShown, this, &frmMainWindow::ShowNode);
    connect(m_treeControl, &SubscriptionTreeController::NodeRenamed, this, [this](CategoryNode *node) {
        ShowDetails(node);
        ui->grdSubscriptions->Fill(node, true); // its row holds the old name
        m_editor->ShowTitle(node->text());
    });
    connect(m_treeControl, &SubscriptionTreeController::RowsChanged, this,
            [this] { ui->grdSubscriptions->Fill(m_treeControl->CurrentNode(), true); });
    ui->grdSubscriptions->SetSource(&m_tree, &m_treeControl->Facts());
    ui->splitMain->setStretchFactor(0, 0);
    ui->splitMain->setStretchFactor(1, 1);
    ui->splitMain->setSizes({300, 740});
    ui->splitRight->setSizes({200, 440});
    ui->splitLower->setStretchFactor(1, 1);
    ui->splitLower->setSizes({260, 480});
    m_editor = new SubscriptionSettingsEditor(ui->fraSettingsEditor);
    ui->layoutSettingsEditor->addWidget(m_editor);
    m_editor->SetHost(this);
    // The page turns Apply on through OnStatusChange; its clean state turns it off.
    connect(m_editor, &ConfigPage::DirtyChanged, ui->cmdApply, &QWidget::setEnabled);
    connect(m_editor, &SubscriptionSettingsEditor::TitleApplied, this, [this](const QString &newTitle) {
        // A refused name leaves the node, and so the tab, as it was.
        if (CategoryNode *node = m_treeControl->CurrentNode()) {
            m_treeControl->Rename(node, newTitle);
            m_editor->ShowTitle(node->text());
        }
    });
    connect(m_editor, &SubscriptionSettingsEditor::Applied, this,
            [this] { ShowDetails(m_treeControl->CurrentNode()); });
}

void frmMainWindow::ConnectCommands()
{
    connect(ui->cmdAdd, &QPushButton::clicked, this, &frmMainWindow::OnAdd);
    connect(ui->cmdDelete, &QPushButton::clicked, m_treeControl, &SubscriptionTreeController::Delete);
    connect(ui->cmdNewCategory, &QPushButton::clicked, m_treeControl,
            &SubscriptionTreeController::NewCategory);
    connect(ui->cmdPreviewThisFeed, &QPushButton::clicked, this, &frmMainWindow::OnPreviewThisFeed);
    connect(ui->cmdPrefs, &QPushButton::clicked, this, &frmMainWindow::OnPrefs);
    connect(ui->cmdAbout, &QPushButton::clicked, this, [this] { frmAbout(this).exec(); });
    connect(ui->cmdApply, &QPushButton::clicked, this, [this] {
        m_editor->Apply();
        ShowDetails(m_treeControl->CurrentNode());
    });
    connect(ui->cmdOK, &QPushButton::clicked, this, &frmMainWindow::OnOK);
    connect(ui->cmdCancel, &QPushButton::clicked, this, &QWidget::close);
    // cmdFetchSubsNow is part of the window and deliberately does nothing.
    connect(ui->chkShowDetails, &QCheckBox::toggled, this, [this](bool shown) {
        ui->fraDetails->setVisible(shown);
        SaveViewSetting(QStringLiteral("ShowMainWindowDetails"), shown);
    });
    connect(ui->grdSubscriptions, &SubscriptionGridView::UrlColumnToggled, this,
            [this](bool shown) { SaveViewSetting(QStringLiteral("ShowUrlColumn"), shown); });
    connect(ui->grdSubscriptions, &SubscriptionGridView::SubscriptionChosen, m_treeControl,
            &SubscriptionTreeController::MoveCurrentTo);
    connect(ui->grdSubscriptions, &SubscriptionGridView::EnabledToggleRequested, this,
            [this](qint32 id) { m_treeControl->ToggleCheck(FindSubscriptionNode(m_tree, id)); });
}

// ---- The host contract -----------------------------------------------------------------

void frmMainWindow::SetClient(quillon::SubscribeClientPtr client)
{
    m_client = std::move(client);
    m_treeControl->SetClient(m_client);
    m_editor->SetClient(m_client);
    m_router.SetClient(m_client);
}

QString frmMainWindow::GetConsumerID() const
{
    return kConfigConsumer;
}

QString frmMainWindow::GetNewsSubscriptionType() const
{
    return EngineNames::kNewsClass;
}

void frmMainWindow::OnStatusChange()
{
    ui->cmdApply->setEnabled(true);
}

void frmMainWindow::EditConfiguration(qint32 subscriptionId, bool &handled)
{
    handled = false;
    if (subscriptionId == 0)
        OnAdd();
    else
        handled = SelectRowByID(subscriptionId);
}

void frmMainWindow::SetHotHelp(const QString &text, const QString &warning)
{
    // The window has no hot-help line of its own: the status line carries it.
    SetStatusText(warning.isEmpty() ? text : warning);
}

void frmMainWindow::SetStatusText(const QString &text)
{
    ui->lblStatusText->setText(text);
}

QString frmMainWindow::StatusText() const
{
    return ui->lblStatusText->text();
}

void frmMainWindow::SetBusy(bool busy)
{
    if (busy) {
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
        ++m_busyDepth;
    } else if (m_busyDepth > 0) {
        QGuiApplication::restoreOverrideCursor();
        --m_busyDepth;
    }
}

QStringList frmMainWindow::Categories() const
{
    return CategoryPathsInIndexOrder(m_tree);
}

// ---- Form load and close ---------------------------------------------------------------

void frmMainWindow::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (!m_formLoaded)
        FormLoad();
}

void frmMainWindow::FormLoad()
{
    if (m_formLoaded || !m_client)
        return;
    m_formLoaded = true;
    m_loading = true;
    try {
        CLog::SaveMessage(kLoadLog, QStringLiteral("load localization strings"));
        LoadStrings(QuillonDataFolder());
        CLog::SaveMessage(kLoadLog, QStringLiteral("Size Window"));
        QSize size = MainWindowSettings(*m_client).RememberedSize();
        if (const QScreen *screen = this->screen(); screen && size.isValid())
            size = size.boundedTo(screen->availableGeometry().size());
        if (size.isValid())
            resize(size);
        CLog::SaveMessage(kLoadLog, QStringLiteral("ShowMainWindowDetails"));
        ShowRememberedView();
        // The settings editor fills its own unit lists when it is made.
        CLog::SaveMessage(kLoadLog, QStringLiteral("SetupComboBoxes"));
        m_loading = false;
        CLog::SaveMessage(kLoadLog, QStringLiteral("LoadSubscriptionsList"));
        CategoryNode *lastPlaced = m_treeControl->LoadList();
        CLog::SaveMessage(kLoadLog, QStringLiteral("SetSelectedItem"));
        // A category the user had selected last time wins over the last subscription placed.
        CategoryNode *saved = FindSelectedCategory(m_tree);
        m_treeControl->SelectNode(saved ? saved : lastPlaced);
        // The list was read and the selection shown a moment ago: nothing is left to refresh.
        CLog::SaveMessage(kLoadLog, QLatin1String(HandlerNames::DoDisplayRefresh));
    } catch (const std::exception &e) {
        m_loading = false;
        CLog::SaveMessage(kLoadLog, QStringLiteral("failed"), QString::fromUtf8(e.what()));
    }
    FollowLogWindowSetting();
    // After the window is on screen: the set-up's dialog then opens over it, not before it.
    QTimer::singleShot(0, this, [this] {
        RunFirstRunCheck();
        // The engine may have ended while the set-up asked: a closed window stays closed.
        if (!m_unloaded)
            ForceForegroundWindow(this);
    });
}

void frmMainWindow::FollowLogWindowSetting()
{
    namespace G = quillon::GeneralSettingKeys;
    try {
        const bool wanted = TextToBool(
            GetConsumerSetting(*m_client, G::kShowLogWindow, QStringLiteral("0"), G::kConsumer, G::kSection));
        if (wanted && !m_logWindow) {
            m_logWindow = new frmLogWindow(frmLogWindow::EngineLogFile(*m_client), this);
            m_logWindow->show();
        } else if (!wanted && m_logWindow) {
            m_logWindow->close();
        }
    } catch (const std::exception &e) {
        CLog::SaveMessage(QStringLiteral("Log window"), QStringLiteral("failed"),
                          QString::fromUtf8(e.what()));
    }
}

void frmMainWindow::RunFirstRunCheck()
{
    if (MainWindowSettings::TakeFirstRun()) {
        if (m_entryPoints.firstRunSetup)
            m_entryPoints.firstRunSetup(this);
        else
            CLog::SaveMessage(kLoadLog, QStringLiteral("first run: the set-up is not available yet"));
    }
    MainWindowSettings::MarkStartupComplete();
}

void frmMainWindow::ShowRememberedView()
{
    MainWindowSettings settings(*m_client);
    ui->chkShowDetails->setChecked(settings.ShowDetails());
    ui->fraDetails->setVisible(ui->chkShowDetails->isChecked());
    ui->grdSubscriptions->SetUrlColumnShown(settings.ShowUrlColumn());
}

void frmMainWindow::SaveViewSetting(const QString &key, bool value)
{
    if (m_client && !m_loading)
        MainWindowSettings(*m_client).SaveView(key, value);
}

void frmMainWindow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (m_formLoaded && !m_loading)
        m_sizeSaveTimer.start();
}

void frmMainWindow::SaveWindowSize()
{
    m_sizeSaveTimer.stop();
    if (m_client && !isMinimized() && !isMaximized())
        MainWindowSettings(*m_client).SaveSize(size());
}

void frmMainWindow::closeEvent(QCloseEvent *event)
{
    if (!m_forceClose && !CommitEdits(true)) {
        event->ignore();
        return;
    }
    if (m_formLoaded && !m_forceClose) {
        SaveWindowSize();
        // Keeps which categories were open and selected for the next start.
        m_treeControl->SaveTree();
    }
    if (!m_unloaded) {
        m_unloaded = true;
        Q_EMIT Unloaded();
    }
    event->accept();
}

// ---- The list and the selection --------------------------------------------------------

void frmMainWindow::LoadSubscriptionsList()
{
    m_treeControl->SelectNode(m_treeControl->LoadList());
}

bool frmMainWindow::SelectRowByID(qint32 subscriptionId)
{
    return m_treeControl->SelectRowByID(subscriptionId);
}

qint32 frmMainWindow::SelectedSubscriptionId() const
{
    return m_treeControl->SelectedSubscriptionId();
}

void frmMainWindow::ShowNode(CategoryNode *node)
{
    ShowDetails(node);
    ui->grdSubscriptions->Fill(node);
    LoadEditor(node);
}

bool frmMainWindow::CommitEdits(bool allowCancel)
{
    return fromMessageBoxCode(m_editor->CommitCurrentEdits(allowCancel)) != DialogAnswer::Cancel;
}

void frmMainWindow::LoadEditor(CategoryNode *node)
{
    EditorSelection selection;
    if (IsSubscription(node)) {
        const qint32 id = node->tag().toInt();
        selection.kind = EditorSelection::Kind::Subscription;
        selection.url = m_treeControl->Facts().value(id).url;
        selection.subscriptionIds = {id};
    } else if (IsCategory(node)) {
        selection.kind = EditorSelection::Kind::Category;
        for (const QString &tag : CollectSubscriptionIDs(*node))
            selection.subscriptionIds.append(tag.toInt());
    }
    if (node)
        selection.title = node->text();
    m_editor->LoadSelection(selection);
}

void frmMainWindow::Run()
{
    m_router.Run();
    // A subscription's downloads move on without a message: its details are read each tick.
    CategoryNode *node = m_treeControl->CurrentNode();
    if (node && IsSubscription(node) && ui->fraDetails->isVisible())
        ShowDetails(node);
}

void frmMainWindow::ShowDetails(CategoryNode *node)
{
    if (!node) {
        ui->fraDetails->ShowNothing();
    } else if (IsSubscription(node)) {
        const qint32 id = node->tag().toInt();
        SubscriptionFacts &facts = m_treeControl->Facts()[id];
        SubscriptionStatus status;
        if (m_client && quillon::isValidId(id)) {
            try {
                SubscriptionListLoader::ReadStatus(*m_client, id, facts, status);
            } catch (const std::exception &e) {
                qCWarning(lcMainWindow) << "details of" << id << "not read:" << e.what();
            }
        }
        ui->fraDetails->ShowSubscription(node->text(), facts, status);
    } else {
        QList<SubscriptionFacts> subscriptions;
        for (const CategoryNode *subscription : CollectSubscriptions(*node))
            subscriptions.append(m_treeControl->Facts().value(subscription->tag().toInt()));
        ui->fraDetails->ShowCategory(node->text(), subscriptions);
    }
}
