#include "frmMainWindow.h"

#include "CLog.h"
#include "CategoryTreeModel.h"
#include "ConsumerSettings.h"
#include "DialogAnswer.h"
#include "DetailsPane.h"
#include "EngineNames.h"
#include "HandleGuard.h"
#include "LocalSettings.h"
#include "PropertyBag.h"
#include "QLUtils.h"
#include "RegistrySettings.h"
#include "StandardDialogs.h"
#include "SubscriptionGridModel.h"
#include "SubscriptionSettingsEditor.h"
#include "categoriesUtils.h"
#include "commonUtils.h"
#include "frmAbout.h"
#include "frmEnclosureWarning.h"
#include "frmUserNameAndPassword.h"
#include "localization.h"
#include "ui_frmMainWindow.h"

#include <QAction>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLoggingCategory>
#include <QScopedValueRollback>
#include <QScreen>
#include <QTimer>

using EngineNames::kNewsClass;

Q_LOGGING_CATEGORY(lcMainWindow, "corvell.mainwindow")

using namespace categoriesUtils;

namespace {
const QString kConfigConsumer = QStringLiteral("CONFIGCONSUMER");
const QString kMediaConsumer = QStringLiteral("MEDIACONSUMER");
const QString kLoadLog = QStringLiteral("Main window load");
constexpr int kSaveSizeDelayMs = 500;
constexpr int kMinimumRememberedSize = 200;

bool validId(qint32 id)
{
    return id >= 1 && id != quillon::kMissing;
}
} // namespace

frmMainWindow::frmMainWindow(QWidget *parent)
    : QWidget(parent), ui(std::make_unique<Ui::frmMainWindow>()), m_commands(m_tree, this),
      m_modifierProbe([] { return QGuiApplication::queryKeyboardModifiers(); })
{
    ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose, false);
    SetupViews();
    SetupSettingsEditor();
    ConnectCommands();
    ConnectTree();
    m_sizeSaveTimer.setSingleShot(true);
    m_sizeSaveTimer.setInterval(kSaveSizeDelayMs);
    connect(&m_sizeSaveTimer, &QTimer::timeout, this, &frmMainWindow::SaveWindowSize);
}

frmMainWindow::~frmMainWindow()
{
    while (m_busyDepth > 0)
        SetBusy(false);
}

void frmMainWindow::SetupViews()
{
    m_model = new CategoryTreeModel(m_tree, this);
    m_model->SetToolTipSource(
        [this](const CategoryNode &node) { return m_facts.value(node.tag().toInt()).url; });
    ui->subsTree->setModel(m_model);
    SetupGrid();
    ui->splitMain->setStretchFactor(0, 0);
    ui->splitMain->setStretchFactor(1, 1);
    ui->splitMain->setSizes({300, 740});
    ui->splitRight->setSizes({200, 440});
    ui->splitLower->setStretchFactor(1, 1);
    ui->splitLower->setSizes({260, 480});
    ui->stkDetails->setCurrentWidget(ui->picNothing);
}

void frmMainWindow::SetupGrid()
{
    m_grid = new SubscriptionGridModel(this);
    ui->grdSubscriptions->setModel(m_grid);
    QHeaderView *header = ui->grdSubscriptions->horizontalHeader();
    header->setSectionResizeMode(QHeaderView::Interactive);
    header->resizeSection(SubscriptionGridModel::ColumnEnabled, 64);
    header->resizeSection(SubscriptionGridModel::ColumnTitle, 280);
    ui->grdSubscriptions->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    ui->grdSubscriptions->setColumnHidden(SubscriptionGridModel::ColumnUrl, true);
    // The header's menu turns the address column on and off.
    m_showUrlColumn = new QAction(QStringLiteral("Show Subscription URL"), header);
    m_showUrlColumn->setObjectName(QStringLiteral("actShowUrlColumn"));
    m_showUrlColumn->setCheckable(true);
    header->setContextMenuPolicy(Qt::ActionsContextMenu);
    header->addAction(m_showUrlColumn);
    connect(m_showUrlColumn, &QAction::toggled, this, [this](bool shown) {
        ui->grdSubscriptions->setColumnHidden(SubscriptionGridModel::ColumnUrl, !shown);
        if (!m_loading)
            SaveViewSetting(QStringLiteral("ShowUrlColumn"), shown);
    });
    connect(m_grid, &SubscriptionGridModel::EnabledToggleRequested, this, &frmMainWindow::OnGridToggle);
    connect(ui->grdSubscriptions, &QTableView::clicked, this, &frmMainWindow::OnGridClicked);
    connect(ui->grdSubscriptions, &QTableView::activated, this, &frmMainWindow::OnGridClicked);
}

void frmMainWindow::SetupSettingsEditor()
{
    m_editor = new SubscriptionSettingsEditor(ui->fraSettingsEditor);
    ui->layoutSettingsEditor->addWidget(m_editor);
    m_editor->SetHost(this);
    // The page turns Apply on through OnStatusChange; its clean state turns it off.
    connect(m_editor, &ConfigPage::DirtyChanged, ui->cmdApply, &QWidget::setEnabled);
    connect(m_editor, &SubscriptionSettingsEditor::TitleApplied, this, &frmMainWindow::OnTitleApplied);
    connect(m_editor, &SubscriptionSettingsEditor::Applied, this, [this] { ShowDetails(CurrentNode()); });
}

void frmMainWindow::ConnectCommands()
{
    connect(ui->cmdAdd, &QPushButton::clicked, this, &frmMainWindow::OnAdd);
    connect(ui->cmdDelete, &QPushButton::clicked, this, &frmMainWindow::OnDelete);
    connect(ui->cmdNewCategory, &QPushButton::clicked, this, &frmMainWindow::OnNewCategory);
    connect(ui->cmdPreviewThisFeed, &QPushButton::clicked, this, &frmMainWindow::OnPreviewThisFeed);
    connect(ui->cmdPrefs, &QPushButton::clicked, this, &frmMainWindow::OnPrefs);
    connect(ui->cmdAbout, &QPushButton::clicked, this, &frmMainWindow::OnAbout);
    connect(ui->cmdApply, &QPushButton::clicked, this, &frmMainWindow::OnApply);
    connect(ui->cmdOK, &QPushButton::clicked, this, &frmMainWindow::OnOK);
    connect(ui->cmdCancel, &QPushButton::clicked, this, &QWidget::close);
    // cmdFetchSubsNow is part of the window and deliberately does nothing.
    connect(ui->chkShowDetails, &QCheckBox::toggled, this, [this](bool shown) {
        ui->fraDetails->setVisible(shown);
        if (!m_loading)
            SaveViewSetting(QStringLiteral("ShowMainWindowDetails"), shown);
    });
}

void frmMainWindow::ConnectTree()
{
    SubscriptionTreeView *view = ui->subsTree;
    connect(view->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &frmMainWindow::OnCurrentChanged);
    connect(view, &QTreeView::expanded, this,
            [this](const QModelIndex &at) { OnExpansionChanged(at, true); });
    connect(view, &QTreeView::collapsed, this,
            [this](const QModelIndex &at) { OnExpansionChanged(at, false); });
    connect(view, &SubscriptionTreeView::CheckToggleRequested, this, &frmMainWindow::OnCheckToggle);
    connect(view, &SubscriptionTreeView::DeleteRequested, this, &frmMainWindow::OnDelete);
    connect(view, &SubscriptionTreeView::NodeDropped, this, &frmMainWindow::OnNodeDropped);
    connect(m_model, &CategoryTreeModel::RenameRequested, this, &frmMainWindow::OnRenameRequested);
}

void frmMainWindow::SetClient(quillon::SubscribeClientPtr client)
{
    m_client = std::move(client);
    m_commands.SetClient(m_client);
    m_editor->SetClient(m_client);
}

void frmMainWindow::SetStatusText(const QString &text)
{
    ui->lblStatusText->setText(text);
}

QString frmMainWindow::GetConsumerID() const
{
    return kConfigConsumer;
}

QString frmMainWindow::GetNewsSubscriptionType() const
{
    return kNewsClass;
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
    QList<const CategoryNode *> categories;
    QList<const CategoryNode *> pending;
    for (int i = 0; i < m_tree.topLevelCount(); ++i)
        pending.append(m_tree.topLevelNode(i));
    while (!pending.isEmpty()) {
        const CategoryNode *node = pending.takeLast();
        if (!IsCategory(node))
            continue;
        categories.append(node);
        for (int i = 0; i < node->childCount(); ++i)
            pending.append(node->child(i));
    }
    std::sort(categories.begin(), categories.end(),
              [](const CategoryNode *a, const CategoryNode *b) { return a->indexOrder() < b->indexOrder(); });
    QStringList paths;
    for (const CategoryNode *category : std::as_const(categories))
        paths.append(category->fullPath());
    return paths;
}

QString frmMainWindow::StatusText() const
{
    return ui->lblStatusText->text();
}

// ---- Form load -------------------------------------------------------------------------

void frmMainWindow::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (!m_formLoaded)
        FormLoad();
}

void frmMainWindow::LogLoadStep(const QString &label)
{
    CLog::SaveMessage(kLoadLog, label);
}

void frmMainWindow::FormLoad()
{
    if (m_formLoaded || !m_client)
        return;
    m_formLoaded = true;
    m_loading = true;
    try {
        LogLoadStep(QStringLiteral("load localization strings"));
        LoadStrings(QuillonDataFolder());
        LogLoadStep(QStringLiteral("Size Window"));
        SizeWindow();
        LogLoadStep(QStringLiteral("ShowMainWindowDetails"));
        ShowMainWindowDetails();
        // The settings editor fills its own unit lists when it is made.
        LogLoadStep(QStringLiteral("SetupComboBoxes"));
        m_loading = false;
        LogLoadStep(QStringLiteral("LoadSubscriptionsList"));
        CategoryNode *lastPlaced = LoadList();
        LogLoadStep(QStringLiteral("SetSelectedItem"));
        SetSelectedItem(lastPlaced);
        // The list was read and the selection shown a moment ago: nothing is left to refresh.
        LogLoadStep(QStringLiteral("DoDisplayRefresh"));
    } catch (const std::exception &e) {
        m_loading = false;
        CLog::SaveMessage(kLoadLog, QStringLiteral("failed"), QString::fromUtf8(e.what()));
    }
    RunFirstRunCheck();
    QTimer::singleShot(0, this, [this] { ForceForegroundWindow(this); });
}

void frmMainWindow::RunFirstRunCheck()
{
    if (GetSetting(QStringLiteral("Quillon"), kConfigConsumer, QStringLiteral("ConfigAppFirstRun"),
                   QStringLiteral("0")) == QLatin1String("0")) {
        SaveSetting(QStringLiteral("Quillon"), kConfigConsumer, QStringLiteral("ConfigAppFirstRun"),
                    QStringLiteral("1"));
        RunFirstRunSetup();
    }
    SaveSetting(QStringLiteral("Quillon"), QStringLiteral("Quillon"), QStringLiteral("ConfigStartupComplete"),
                QStringLiteral("1"));
}

void frmMainWindow::RunFirstRunSetup()
{
    if (m_entryPoints.firstRunSetup) {
        m_entryPoints.firstRunSetup(this);
        return;
    }
    CLog::SaveMessage(kLoadLog, QStringLiteral("first run: the set-up is not available yet"));
}

QString frmMainWindow::ConfigSetting(const QString &key, const QString &defaultValue)
{
    return GetConsumerSetting(*m_client, key, defaultValue, kConfigConsumer, QString());
}

void frmMainWindow::SizeWindow()
{
    const qint32 width = TextToInt(ConfigSetting(QStringLiteral("MainWindowWidth"), quillon::kMissingText));
    const qint32 height = TextToInt(ConfigSetting(QStringLiteral("MainWindowHeight"), quillon::kMissingText));
    if (width < kMinimumRememberedSize || height < kMinimumRememberedSize)
        return;
    QSize size(width, height);
    if (const QScreen *screen = this->screen())
        size = size.boundedTo(screen->availableGeometry().size());
    resize(size);
}

void frmMainWindow::ShowMainWindowDetails()
{
    ui->chkShowDetails->setChecked(
        TextToBool(ConfigSetting(QStringLiteral("ShowMainWindowDetails"), QStringLiteral("1"))));
    ui->fraDetails->setVisible(ui->chkShowDetails->isChecked());
    const bool showUrl = TextToBool(ConfigSetting(QStringLiteral("ShowUrlColumn"), QStringLiteral("0")));
    m_showUrlColumn->setChecked(showUrl);
    ui->grdSubscriptions->setColumnHidden(SubscriptionGridModel::ColumnUrl, !showUrl);
}

void frmMainWindow::SaveViewSetting(const QString &key, bool value)
{
    if (!m_client)
        return;
    try {
        SetConsumerSettingBool(*m_client, kConfigConsumer, QString(), key, value);
    } catch (const std::exception &e) {
        qCWarning(lcMainWindow) << "could not keep" << key << e.what();
    }
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
    if (!m_client || isMinimized() || isMaximized())
        return;
    try {
        SetConsumerSetting(*m_client, kConfigConsumer, QString(), QStringLiteral("MainWindowWidth"),
                           QString::number(width()));
        SetConsumerSetting(*m_client, kConfigConsumer, QString(), QStringLiteral("MainWindowHeight"),
                           QString::number(height()));
    } catch (const std::exception &e) {
        qCWarning(lcMainWindow) << "could not keep the window size:" << e.what();
    }
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
        try {
            m_commands.SaveTree();
        } catch (const std::exception &e) {
            qCWarning(lcMainWindow) << "could not keep the categories:" << e.what();
        }
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
    SelectNode(LoadList());
}

CategoryNode *frmMainWindow::LoadList()
{
    if (!m_client)
        return nullptr;
    const bool wasLoading = std::exchange(m_loading, true);
    SubscriptionListLoader::Result result;
    m_model->BeginBulkChange();
    try {
        result = SubscriptionListLoader(*m_client, m_tree).Load();
    } catch (...) {
        m_model->EndBulkChange();
        m_loading = wasLoading;
        throw;
    }
    m_model->EndBulkChange();
    m_facts = std::move(result.facts);
    m_ownBinds.clear();
    m_selectedKey.clear();
    RestoreExpansion(nullptr);
    if (result.savedTreeDropped)
        m_commands.SaveTree();
    m_loading = wasLoading;
    return result.lastPlaced;
}

void frmMainWindow::RestoreExpansion(const CategoryNode *parent)
{
    const int count = parent ? parent->childCount() : m_tree.topLevelCount();
    for (int i = 0; i < count; ++i) {
        const CategoryNode *node = parent ? parent->child(i) : m_tree.topLevelNode(i);
        if (!IsCategory(node) || !node->expanded())
            continue;
        ui->subsTree->setExpanded(m_model->IndexOf(node), true);
        RestoreExpansion(node);
    }
}

void frmMainWindow::SetSelectedItem(CategoryNode *lastPlaced)
{
    // A category the user had selected last time wins over the last subscription placed.
    CategoryNode *saved = FindSelectedCategory(nullptr);
    SelectNode(saved ? saved : lastPlaced);
}

CategoryNode *frmMainWindow::FindSelectedCategory(CategoryNode *parent) const
{
    const int count = parent ? parent->childCount() : m_tree.topLevelCount();
    for (int i = 0; i < count; ++i) {
        CategoryNode *node = parent ? parent->child(i) : m_tree.topLevelNode(i);
        if (!IsCategory(node))
            continue;
        if (node->selected())
            return node;
        if (CategoryNode *found = FindSelectedCategory(node))
            return found;
    }
    return nullptr;
}

CategoryNode *frmMainWindow::CurrentNode() const
{
    return ui->subsTree->CurrentNode();
}

qint32 frmMainWindow::SelectedSubscriptionId() const
{
    const CategoryNode *node = CurrentNode();
    return IsSubscription(node) ? node->tag().toInt() : 0;
}

CategoryNode *frmMainWindow::FindSubscriptionNode(qint32 subscriptionId) const
{
    const QString tag = QString::number(subscriptionId);
    QList<CategoryNode *> pending;
    for (int i = 0; i < m_tree.topLevelCount(); ++i)
        pending.append(m_tree.topLevelNode(i));
    while (!pending.isEmpty()) {
        CategoryNode *node = pending.takeLast();
        if (node->tag() == tag)
            return node;
        for (int i = 0; i < node->childCount(); ++i)
            pending.append(node->child(i));
    }
    return nullptr;
}

bool frmMainWindow::SelectRowByID(qint32 subscriptionId)
{
    CategoryNode *node = validId(subscriptionId) ? FindSubscriptionNode(subscriptionId) : nullptr;
    if (!node)
        return false;
    SelectNode(node);
    return true;
}

void frmMainWindow::SelectNode(CategoryNode *node)
{
    const QModelIndex at = m_model->IndexOf(node);
    {
        // Whoever selects here has already dealt with pending edits.
        const QScopedValueRollback<bool> guard(m_selecting, true);
        if (at.isValid())
            ui->subsTree->setCurrentIndex(at);
        else
            ui->subsTree->selectionModel()->clear();
    }
    if (at.isValid())
        ui->subsTree->scrollTo(at);
    ApplySelection(node);
}

void frmMainWindow::OnCurrentChanged(const QModelIndex &current, const QModelIndex &previous)
{
    if (m_selecting)
        return;
    if (!CommitEdits(true)) {
        // Cancel keeps the old selection and its edits.
        const QScopedValueRollback<bool> back(m_selecting, true);
        ui->subsTree->setCurrentIndex(previous);
        return;
    }
    ApplySelection(m_model->NodeAt(current));
}

void frmMainWindow::ApplySelection(CategoryNode *node)
{
    if (CategoryNode *old = m_tree.findByKey(m_selectedKey); old && old != node)
        old->setSelected(false);
    m_selectedKey = node ? node->key() : QString();
    if (node)
        node->setSelected(true);
    ShowDetails(node);
    FillGrid(node);
    LoadEditor(node);
}

void frmMainWindow::OnExpansionChanged(const QModelIndex &index, bool expanded)
{
    CategoryNode *node = m_model->NodeAt(index);
    if (!node || node->expanded() == expanded)
        return;
    node->setExpanded(expanded);
    if (!m_loading)
        RunEngineCommand(QStringLiteral("expand"), [this] { m_commands.SaveTree(); });
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
        selection.url = m_facts.value(id).url;
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

// ---- Details pane and grid -------------------------------------------------------------

void frmMainWindow::ShowDetails(CategoryNode *node)
{
    if (!node) {
        ui->lblDetailsHeading->setText(DetailsPane::kNothingSelected);
        ui->stkDetails->setCurrentWidget(ui->picNothing);
        return;
    }
    ui->lblDetailsHeading->setText(DetailsPane::Heading(node->text()));
    if (IsSubscription(node))
        ShowSubscriptionDetails(*node);
    else
        ShowCategoryDetails(*node);
}

void frmMainWindow::ShowSubscriptionDetails(const CategoryNode &node)
{
    ui->stkDetails->setCurrentWidget(ui->picDetails);
    const qint32 id = node.tag().toInt();
    SubscriptionFacts &facts = m_facts[id];
    QString status = quillon::kMissingText;
    QString lastCheck = quillon::kMissingText;
    QString nextCheck = quillon::kMissingText;
    if (m_client && validId(id)) {
        try {
            HandleGuard item(*m_client, m_client->GetItemBag(kNewsClass, id, 0));
            facts.url = m_client->GetStringValue(item.get(), QStringLiteral("URL"));
            status = m_client->GetStringValue(item.get(), QStringLiteral("LASTUPDATESTATUS"));
            lastCheck = m_client->GetStringValue(item.get(), QStringLiteral("LastDateCheck"));
            nextCheck = m_client->GetStringValue(item.get(), QStringLiteral("NEXTUPDATETIME"));
            facts.readCount = m_client->GetLongValue(item.get(), QStringLiteral("ITEMREADCOUNT"));
            facts.unreadCount = m_client->GetLongValue(item.get(), QStringLiteral("ITEMUNREADCOUNT"));
        } catch (const std::exception &e) {
            qCWarning(lcMainWindow) << "details of" << id << "not read:" << e.what();
        }
    }
    ui->lblDetailsUrl->setText(facts.url);
    ui->lblDetailsStatus->setText(DetailsPane::StatusText(status));
    ui->lblDetailsLastCheck->setText(DetailsPane::DateText(lastCheck));
    ui->lblDetailsNextCheck->setText(DetailsPane::DateText(nextCheck));
    ui->lblReadArticles->setText(DetailsPane::CountText(facts.readCount));
    ui->lblNewArticles->setText(DetailsPane::CountText(facts.unreadCount));
}

void frmMainWindow::ShowCategoryDetails(const CategoryNode &node)
{
    ui->stkDetails->setCurrentWidget(ui->picCategoryDetails);
    const QList<CategoryNode *> subscriptions = CollectSubscriptions(node);
    qint64 read = 0;
    qint64 unread = 0;
    for (const CategoryNode *subscription : subscriptions) {
        const SubscriptionFacts facts = m_facts.value(subscription->tag().toInt());
        read += DetailsPane::CountOrZero(facts.readCount);
        unread += DetailsPane::CountOrZero(facts.unreadCount);
    }
    ui->lblSubs->setText(DetailsPane::CountText(subscriptions.size()));
    ui->lblCatReadArticles->setText(DetailsPane::CountText(read));
    ui->lblCatNewArticles->setText(DetailsPane::CountText(unread));
}

QList<SubscriptionGridModel::Row> frmMainWindow::GridRows(const CategoryNode *category) const
{
    QList<CategoryNode *> subscriptions;
    if (category) {
        subscriptions = CollectSubscriptions(*category);
    } else {
        for (int i = 0; i < m_tree.topLevelCount(); ++i) {
            CategoryNode *top = m_tree.topLevelNode(i);
            if (IsSubscription(top))
                subscriptions.append(top);
            else
                subscriptions.append(CollectSubscriptions(*top));
        }
    }
    QList<SubscriptionGridModel::Row> rows;
    rows.reserve(subscriptions.size());
    for (const CategoryNode *subscription : std::as_const(subscriptions)) {
        const qint32 id = subscription->tag().toInt();
        rows.append({id, subscription->text(), m_facts.value(id).url,
                     subscription->image().startsWith(QLatin1String("che"))});
    }
    return rows;
}

void frmMainWindow::FillGrid(CategoryNode *node, bool rebuild)
{
    // The grid lists the chosen category; a subscription already listed only moves the row.
    const qint32 selectedId = IsSubscription(node) ? node->tag().toInt() : 0;
    const bool listed = selectedId && m_grid->RowOf(selectedId) >= 0;
    if (!listed) {
        const CategoryNode *category = IsSubscription(node) ? node->parent() : node;
        m_gridCategoryKey = category ? category->key() : QString();
    }
    if (!listed || rebuild) {
        const CategoryNode *category =
            m_gridCategoryKey.isEmpty() ? nullptr : m_tree.findByKey(m_gridCategoryKey);
        m_grid->SetRows(GridRows(category));
    }
    const int row = selectedId ? m_grid->RowOf(selectedId) : -1;
    if (row >= 0)
        ui->grdSubscriptions->selectRow(row);
    else
        ui->grdSubscriptions->clearSelection();
}

void frmMainWindow::OnGridClicked(const QModelIndex &index)
{
    if (!index.isValid() || index.column() == SubscriptionGridModel::ColumnEnabled)
        return;
    if (CategoryNode *node = FindSubscriptionNode(m_grid->IdAt(index.row())))
        ui->subsTree->setCurrentIndex(m_model->IndexOf(node));
}

void frmMainWindow::OnGridToggle(qint32 subscriptionId)
{
    if (CategoryNode *node = FindSubscriptionNode(subscriptionId))
        OnCheckToggle(node);
}

// ---- Commands --------------------------------------------------------------------------

bool frmMainWindow::RunEngineCommand(const QString &what, const std::function<void()> &command)
{
    if (!m_client)
        return false;
    const bool wasIgnoring = m_refresh.IgnoringMessages();
    SetIgnoreMessages(true);
    // The view moves its current node while nodes go; the command selects afterwards.
    const QScopedValueRollback<bool> guard(m_selecting, true);
    bool done = true;
    try {
        command();
    } catch (const std::exception &e) {
        done = false;
        CLog::SaveMessage(QStringLiteral("Main window: ") + what, QString::fromUtf8(e.what()));
        ShowAlert(this, QStringLiteral("The change could not be completed."), QString::fromUtf8(e.what()));
    }
    SetIgnoreMessages(wasIgnoring);
    return done;
}

void frmMainWindow::NotAvailableYet(const QString &feature)
{
    ShowAlert(this, feature + QStringLiteral(" is not available yet."),
              QStringLiteral("This part of the program will come with a later version."));
}

void frmMainWindow::OnAdd()
{
    if (!CommitEdits(true))
        return;
    if (m_entryPoints.addSubscription)
        m_entryPoints.addSubscription(this);
    else
        NotAvailableYet(QStringLiteral("Adding subscriptions"));
}

void frmMainWindow::OnPreviewThisFeed()
{
    const CategoryNode *node = CurrentNode();
    if (!IsSubscription(node))
        return;
    const QString url = m_facts.value(node->tag().toInt()).url;
    if (m_entryPoints.previewFeed)
        m_entryPoints.previewFeed(this, url);
    else
        NotAvailableYet(QStringLiteral("The feed preview"));
}

void frmMainWindow::OnPrefs()
{
    if (m_entryPoints.options)
        m_entryPoints.options(this);
    else
        NotAvailableYet(QStringLiteral("The options window"));
}

void frmMainWindow::OnAbout()
{
    frmAbout about(this);
    about.exec();
}

void frmMainWindow::ImportOPMLFile(const QString &path)
{
    if (m_entryPoints.importOpml) {
        m_entryPoints.importOpml(this, path);
        return;
    }
    CLog::SaveMessage(QStringLiteral("ImportOPML"), QStringLiteral("import not available yet"), path);
    SetStatusText(QStringLiteral("Importing OPML files is not available yet: ") + path);
}

void frmMainWindow::OnApply()
{
    m_editor->Apply();
    ShowDetails(CurrentNode());
}

void frmMainWindow::OnOK()
{
    // An apply that stopped (a warning was shown) keeps the window open to fix it.
    if (m_editor->IsDirty() && !m_editor->ApplyEdits())
        return;
    close();
}

void frmMainWindow::OnNewCategory()
{
    if (!CommitEdits(true))
        return;
    CategoryNode *made = nullptr;
    RunEngineCommand(QStringLiteral("new category"), [&] { made = m_commands.NewCategory(CurrentNode()); });
    if (!made)
        return;
    SelectNode(made);
    ui->subsTree->setFocus();
    ui->subsTree->edit(m_model->IndexOf(made));
}

void frmMainWindow::OnRenameRequested(CategoryNode *node, const QString &text)
{
    bool renamed = false;
    RunEngineCommand(QStringLiteral("rename"), [&] { renamed = m_commands.Rename(*node, text); });
    if (renamed && node->key() == m_selectedKey) {
        ShowDetails(node);
        FillGrid(node);
        ui->subsTree->scrollTo(m_model->IndexOf(node));
    }
}

void frmMainWindow::OnTitleApplied(const QString &newTitle)
{
    if (CategoryNode *node = CurrentNode(); IsSubscription(node))
        OnRenameRequested(node, newTitle);
}

void frmMainWindow::OnDelete()
{
    CategoryNode *node = CurrentNode();
    if (!node || !CommitEdits(true))
        return;
    const bool suppressed = TextToBool(GetRegistrySetting(
        QStringLiteral("Quill On"), kConfigConsumer, QStringLiteral("SupressDeleteWarnings"), QString()));
    const bool ctrlHeld = m_modifierProbe().testFlag(Qt::ControlModifier);
    CategoryNode *after = nullptr;
    bool deleted = false;
    RunEngineCommand(QStringLiteral("delete"),
                     [&] { deleted = m_commands.Delete(*node, !suppressed && !ctrlHeld, &after); });
    SelectNode(deleted ? after : CurrentNode());
}

void frmMainWindow::OnCheckToggle(CategoryNode *node)
{
    if (!node)
        return;
    RunEngineCommand(QStringLiteral("check"), [&] {
        const SubscriptionTreeCommands::Binding binding = m_commands.ToggleCheck(*node);
        for (const qint32 id : binding.ids)
            m_ownBinds.insert(id, binding.nowChecked);
    });
    // The grid shows the same checks.
    FillGrid(CurrentNode(), true);
}

void frmMainWindow::OnNodeDropped(CategoryNode *node, CategoryNode *newParent)
{
    if (!node || !CommitEdits(true))
        return;
    CategoryNode *moved = nullptr;
    RunEngineCommand(QStringLiteral("move"), [&] { moved = m_commands.Move(*node, newParent); });
    if (!moved)
        return;
    if (newParent)
        ui->subsTree->expand(m_model->IndexOf(newParent));
    SelectNode(moved);
}

// ---- Engine events ---------------------------------------------------------------------

void frmMainWindow::EventSubscribeClientMessage(qint32 message)
{
    if (!m_client || message <= 0)
        return;
    try {
        const QString name = m_client->GetStringValue(message, QStringLiteral("MESSAGE"));
        if (name == QLatin1String("EngineTerminated")) {
            OnEngineTerminated();
            return;
        }
        HandleGuard result(*m_client, m_client->GetHandleValue(message, QStringLiteral("Result")));
        if (!result.isValid())
            return;
        if (name == QLatin1String("ImportOPML"))
            OnImportOpml(result.get());
        else if (name == QLatin1String("PromptForDownload"))
            OnPromptForDownload(result.get());
        else if (name == QLatin1String("LoginRequired"))
            HandleLoginRequired(result.get());
        else if (name == QLatin1String("SubscriptionAdded"))
            OnSubscriptionAdded(result.get());
        else if (name == QLatin1String("SubscriptionBindingChanged"))
            OnBindingChanged(result.get());
    } catch (const std::exception &e) {
        CLog::SaveMessage(QStringLiteral("EventSubscribeClientMessage"), QString::fromUtf8(e.what()));
    }
}

void frmMainWindow::HandleSubscribeClientCallback(qint32 message)
{
    if (!m_client || message <= 0)
        return;
    try {
        HandleGuard result(*m_client, m_client->GetHandleValue(message, QStringLiteral("Result")));
        if (!result.isValid()) {
            const QString error = m_client->GetStringValue(message, QStringLiteral("ERROR"));
            CLog::SaveMessage(QStringLiteral("HandleSubscribeClientCallback"), error);
            if (SubscriptionListLoader::HasValue(error))
                SetStatusText(error);
            return;
        }
        const qint32 id = m_client->GetLongValue(result.get(), QStringLiteral("SUBSCRIPTIONID"));
        MaybeRefreshDisplay(validId(id) ? id : -1);
    } catch (const std::exception &e) {
        CLog::SaveMessage(QStringLiteral("HandleSubscribeClientCallback"), QString::fromUtf8(e.what()));
    }
}

void frmMainWindow::OnEngineTerminated()
{
    // Nothing can be saved any more: the window goes, and the program with it.
    m_forceClose = true;
    close();
}

void frmMainWindow::OnImportOpml(quillon::Handle result)
{
    if (isMinimized())
        showNormal();
    ImportOPMLFile(m_client->GetStringValue(result, QStringLiteral("PATH")));
}

void frmMainWindow::OnPromptForDownload(quillon::Handle result)
{
    m_downloadQueue.append(m_client->GetLongValue(result, QStringLiteral("SUBSCRIPTIONID")));
    HandlePromptForDownload();
}

void frmMainWindow::HandlePromptForDownload()
{
    // A message that arrives while a question is open joins the queue the open loop empties.
    if (m_askingDownloads || !m_client)
        return;
    const QScopedValueRollback<bool> asking(m_askingDownloads, true);
    while (!m_downloadQueue.isEmpty()) {
        const qint32 id = m_downloadQueue.takeFirst();
        const QString prompt =
            GetConsumerSetting(*m_client, QStringLiteral("PromptForAutoDownload"), QStringLiteral("1"),
                               kMediaConsumer, QStringLiteral("Settings"));
        if (prompt == QLatin1String("1")) {
            frmEnclosureWarning::Run(*m_client, id, this);
            continue;
        }
        if (!validId(id))
            continue;
        const QString general =
            GetConsumerSetting(*m_client, QStringLiteral("EnableAutoDownload"), QStringLiteral("0"),
                               kMediaConsumer, QStringLiteral("Settings"));
        SetConsumerSetting(*m_client, kMediaConsumer, SubscriptionSpecificsSection(id),
                           QStringLiteral("EnableAutoDownload"), general);
    }
}

void frmMainWindow::HandleLoginRequired(quillon::Handle result)
{
    if (!m_client)
        return;
    frmUserNameAndPassword::Run(*m_client, m_client->GetLongValue(result, QStringLiteral("SUBSCRIPTIONID")),
                                this);
}

void frmMainWindow::OnSubscriptionAdded(quillon::Handle result)
{
    const qint32 id = m_client->GetLongValue(result, QStringLiteral("SUBSCRIPTIONID"));
    if (!validId(id))
        return;
    HandleGuard item(*m_client, m_client->GetItemBag(kNewsClass, id, 0));
    const QString url = m_client->GetStringValue(item.get(), QStringLiteral("URL"));
    QString title = m_client->GetStringValue(item.get(), QStringLiteral("TITLE"));
    if (!SubscriptionListLoader::HasValue(title))
        title = url;
    bool added = true;
    AddSubscriptionNode(id, title, url, m_client->GetStringValue(item.get(), QStringLiteral("CATEGORY")),
                        added);
    SetStatusText(QStringLiteral("Adding: ") + title);
    if (!added)
        MaybeRefreshDisplay(id);
}

void frmMainWindow::AddSubscriptionNode(qint32 id, const QString &title, const QString &url,
                                        const QString &category, bool &added)
{
    // Another window's add may already have been placed by a refresh.
    if (FindSubscriptionNode(id))
        return;
    const QScopedValueRollback<bool> guard(m_selecting, true);
    CategoryNode *node = SubscriptionListLoader::Place(m_tree, id, title, category, false);
    if (!node) {
        added = false;
        return;
    }
    m_facts.insert(id, {url, quillon::kMissing, quillon::kMissing});
    FillGrid(CurrentNode(), true);
}

QList<qint32> frmMainWindow::MessageIds(quillon::Handle result)
{
    QList<qint32> ids;
    HandleGuard list(*m_client, m_client->GetHandleValue(result, QStringLiteral("SUBSCRIPTIONIDS")));
    if (list.isValid()) {
        for (qint32 i = 0, n = m_client->ListCount(list.get()); i < n; ++i)
            ids.append(m_client->ListLong(list.get(), i));
    } else {
        ids.append(m_client->GetLongValue(result, QStringLiteral("SUBSCRIPTIONID")));
    }
    return ids;
}

QString frmMainWindow::SubscriptionTitle(qint32 subscriptionId)
{
    try {
        HandleGuard item(*m_client, m_client->GetItemBag(kNewsClass, subscriptionId, 0));
        const QString title = m_client->GetStringValue(item.get(), QStringLiteral("TITLE"));
        return SubscriptionListLoader::HasValue(title) ? title : QString();
    } catch (const quillon::EngineError &) {
        // Removed meanwhile: nothing to name.
        return QString();
    }
}

bool frmMainWindow::BindShouldBeIgnored(qint32 subscriptionId, const QString &bindFlag)
{
    const auto found = m_ownBinds.constFind(subscriptionId);
    if (found == m_ownBinds.constEnd() || *found != (bindFlag == QLatin1String("TRUE")))
        return false;
    m_ownBinds.erase(found);
    return true;
}

void frmMainWindow::OnBindingChanged(quillon::Handle result)
{
    const QString originator = m_client->GetStringValue(result, QStringLiteral("ORIGINATOR"));
    const QString flag = m_client->GetStringValue(result, QStringLiteral("SubscriptionBindFlag"));
    const QList<qint32> ids = MessageIds(result);
    if (originator == kConfigConsumer) {
        for (const qint32 id : ids)
            m_ownBinds.remove(id);
        return;
    }
    // Without an originator, only a change this window did not make itself counts.
    if (originator == quillon::kMissingText &&
        std::all_of(ids.begin(), ids.end(), [&](qint32 id) { return BindShouldBeIgnored(id, flag); }))
        return;
    const QString action =
        flag == QLatin1String("TRUE") ? QStringLiteral("Adding: ") : QStringLiteral("Removing: ");
    for (const qint32 id : ids) {
        if (!validId(id))
            continue;
        if (const QString title = SubscriptionTitle(id); !title.isEmpty())
            SetStatusText(action + title);
    }
    MaybeRefreshDisplay();
}

// ---- Refresh merging -------------------------------------------------------------------

void frmMainWindow::MaybeRefreshDisplay(qint32 selectId)
{
    if (m_refresh.MaybeRefresh(selectId) == RefreshMerger::Action::Refresh)
        RefreshAndSelect(selectId);
}

void frmMainWindow::DoDisplayRefresh()
{
    try {
        RefreshAndSelect(m_refresh.TakePendingSelection());
    } catch (const std::exception &e) {
        CLog::SaveMessage(QStringLiteral("DoDisplayRefresh"), QString::fromUtf8(e.what()));
    }
}

void frmMainWindow::RefreshAndSelect(qint32 selectId)
{
    ++m_refreshCount;
    if (!m_client)
        return;
    // A refresh cannot be cancelled: the question offers only Yes and No.
    m_editor->CommitCurrentEdits(false);
    const qint32 previousId = SelectedSubscriptionId();
    const CategoryNode *current = CurrentNode();
    const QString previousCategory = IsCategory(current) ? current->fullPath() : QString();
    CategoryNode *lastPlaced = LoadList();
    if (validId(selectId) && SelectRowByID(selectId))
        return;
    if (previousId && SelectRowByID(previousId))
        return;
    CategoryNode *category = previousCategory.isEmpty() ? nullptr : FindNodeByPath(m_tree, previousCategory);
    SelectNode(IsCategory(category) ? category : lastPlaced);
}

void frmMainWindow::Run()
{
    try {
        const bool counting = m_refresh.Countdown() > 0;
        if (m_refresh.Flush() != RefreshMerger::Action::Refresh)
            return;
        RefreshAndSelect(m_refresh.TakePendingSelection());
        if (!counting)
            SetStatusText(QString());
    } catch (const std::exception &e) {
        CLog::SaveMessage(QStringLiteral("Config - Runloop"), QString::fromUtf8(e.what()));
    }
}
