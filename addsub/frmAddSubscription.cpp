#include "frmAddSubscription.h"

#include "AddByUrlTab.h"
#include "AddProgress.h"
#include "AddRequestQueue.h"
#include "BrowseTab.h"
#include "CategoryChoices.h"
#include "ClientAccess.h"
#include "ConsumerSettings.h"
#include "DialogAnswer.h"
#include "EngineNames.h"
#include "HandleGuard.h"
#include "ImportTab.h"
#include "OutlineWalk.h"
#include "PropertyBag.h"
#include "SearchTab.h"
#include "StandardDialogs.h"
#include "callbackSupport.h"
#include "ui_frmAddSubscription.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGuiApplication>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcAddSub, "corvell.addsub")

using quillon::Handle;

namespace {
const QString &kConsumer = EngineNames::kConfigConsumer;
const QString kDefaults = QStringLiteral("ConfigDefaults");
const QString kBrowsePref = QStringLiteral("AddToCategoryPref_browse");
const QString kImportPref = QStringLiteral("AddToCategoryPref_import");
constexpr qsizetype kAddsSentAtOnce = 25;
} // namespace

frmAddSubscription::frmAddSubscription(QWidget *parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmAddSubscription>())
{
    ui->setupUi(this);
    m_switchTimer.setObjectName(QStringLiteral("switchTimer"));
    m_switchTimer.setSingleShot(true);
    m_switchTimer.setInterval(0);
    BuildTabs();
    ConnectCommands();
}

frmAddSubscription::~frmAddSubscription()
{
    Dispose();
}

void frmAddSubscription::BuildTabs()
{
    m_urlTab = new AddByUrlTab(this);
    m_browseTab = new BrowseTab(this);
    m_searchTab = new SearchTab(this);
    m_importTab = new ImportTab(this);
    ui->tabController->addTab(m_urlTab, QStringLiteral("By &Address"));
    ui->tabController->addTab(m_browseTab, QStringLiteral("&Directory"));
    ui->tabController->addTab(m_searchTab, QStringLiteral("&Search"));
    ui->tabController->addTab(m_importTab, QStringLiteral("&Import"));
}

void frmAddSubscription::ConnectCommands()
{
    connect(ui->cmdOK, &QPushButton::clicked, this, &frmAddSubscription::OnOK);
    connect(ui->cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(ui->cmdPreviewFeed, &QPushButton::clicked, this, &frmAddSubscription::PreviewFeed);
    connect(ui->tabController, &QTabWidget::currentChanged, this, &frmAddSubscription::OnTabChanged);
    connect(&m_switchTimer, &QTimer::timeout, this, &frmAddSubscription::OnSwitchTimer);
    connect(m_urlTab, &AddByUrlTab::CheckNowClicked, this, [this]() {
        callbackSupport::CheckNow(m_urlTab->Url(), GetClient());
        PreviewFeed(); // what the user sees of the check
    });
    connect(m_browseTab, &BrowseTab::RootSelected, this, &frmAddSubscription::RequestSubList);
    connect(m_importTab, &ImportTab::LoadClicked, this, &frmAddSubscription::LoadFile);
    connect(m_importTab, &ImportTab::SourceChanged, this, &frmAddSubscription::LoadImportSource);
    connect(m_importTab, &ImportTab::ImportAllClicked, this,
            [this](bool checked) { AddSubsToCheckedList(m_importTab->List(), checked); });
    connect(&m_browseTab->UseCategory(), &QCheckBox::clicked, this,
            [this](bool checked) { RememberCategoryChoice(kBrowsePref, checked); });
    connect(&m_importTab->UseCategory(), &QCheckBox::clicked, this,
            [this](bool checked) { RememberCategoryChoice(kImportPref, checked); });
    for (FeedListPanel *list : {&m_browseTab->List(), &m_importTab->List()}) {
        connect(list, &FeedListPanel::RowToggled, this, &frmAddSubscription::AddSubsItemToCheckedList);
        connect(list, &FeedListPanel::CurrentRowChanged, this, &frmAddSubscription::UpdateOkCaption);
    }
}

void frmAddSubscription::SetHost(QObject *host)
{
    m_host = host;
}

void frmAddSubscription::Initialize(const QStringList &categories)
{
    m_categories = categories;
    m_requests = std::make_unique<AddSubscriptionRequests>(GetClient());
    for (QComboBox *box : {&m_urlTab->Categories(), &m_browseTab->Categories(), &m_searchTab->Categories(),
                           &m_importTab->Categories()})
        CategoryChoices::Fill(*box, categories); // once: the categories do not change while it is open
    ui->tabController->setCurrentIndex(UrlTab);
    UpdateOkCaption();
}

quillon::SubscribeClientPtr frmAddSubscription::GetClient() const
{
    return m_requests ? m_requests->ClientPtr() : ClientAccess::GetEngineClient();
}

qint32 frmAddSubscription::GetSubscriptionID(const QString &url)
{
    return m_requests ? m_requests->Subscribed().value(url, 0) : 0;
}

void frmAddSubscription::AddSub(const QString &title, const QString &url, const QString &category)
{
    callbackSupport::RequestAddSubscription(m_host, GetClient(), title, url, true, QString(), QString(),
                                            category);
}

void frmAddSubscription::SetStatus(const QString &text)
{
    callbackSupport::SetTargetStatusText(m_host, text);
}

void frmAddSubscription::OnOK()
{
    hide();
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    const int tab = ui->tabController->currentIndex();
    try {
        if (tab == UrlTab) {
            QString category =
                CategoryChoices::CategoryAt(m_urlTab->Categories().currentIndex(), m_categories);
            if (category == QLatin1String("Automatic"))
                category.clear(); // the engine chooses
            callbackSupport::RequestAddSubscription(m_host, GetClient(), m_urlTab->UserTitle(),
                                                    m_urlTab->Url(), true, m_urlTab->UserName(),
                                                    m_urlTab->Password(), category);
        } else if (tab == SearchTabIndex) {
            QString category =
                CategoryChoices::CategoryAt(m_searchTab->Categories().currentIndex(), m_categories);
            if (category == QLatin1String("Automatic"))
                category = QStringLiteral("Search Feeds");
            const SearchSource source = m_searchTab->CurrentSource();
            const QString url = m_requests->SearchUrl(source, m_searchTab->Words(),
                                                      m_searchTab->LimitChecked(), m_searchTab->LimitText());
            const QString title = QStringLiteral("Search ") + source.title + QStringLiteral(" for '") +
                                  m_searchTab->Words() + QStringLiteral("'");
            callbackSupport::RequestAddSubscription(m_host, GetClient(), title, url, true, QString(),
                                                    QString(), category);
        } else if (FeedListPanel *list = ListOfTab(tab)) {
            PerformActions(*list, ListCategory(tab));
        }
    } catch (const std::exception &e) {
        qCWarning(lcAddSub) << "adding failed:" << e.what();
    }
    // Removals are done by now; the line speaks of uploading only while adds are under way.
    SetStatus(AddProgress::Instance().Running() ? QStringLiteral("Uploading Requests To Server") : QString());
    QGuiApplication::restoreOverrideCursor();
    accept();
}

FeedListPanel *frmAddSubscription::ListOfTab(int index) const
{
    if (index == DirectoryTab)
        return &m_browseTab->List();
    if (index == ImportTabIndex)
        return &m_importTab->List();
    return nullptr;
}

QString frmAddSubscription::ListCategory(int index) const
{
    const bool browse = index == DirectoryTab;
    const QCheckBox &use = browse ? m_browseTab->UseCategory() : m_importTab->UseCategory();
    const QComboBox &box = browse ? m_browseTab->Categories() : m_importTab->Categories();
    return use.isChecked() ? CategoryChoices::CategoryAt(box.currentIndex(), m_categories) : QString();
}

void frmAddSubscription::PerformActions(FeedListPanel &list, const QString &category)
{
    const PendingActions::Counts counts =
        m_pending.Exists() ? m_pending.CountActions() : PendingActions::Counts{};
    const auto client = GetClient();
    if (!counts.any()) {
        const QModelIndex row = list.CurrentRow();
        const FeedListModel &model = list.Model();
        if (model.IsFeed(row))
            callbackSupport::RequestAddSubscription(
                m_host, client, model.TitleOf(row), model.UrlOf(row), true, QString(), QString(),
                PendingActions::CategoryFor(category, model.FoldersAbove(row)));
        return;
    }
    // Removals go first, so a feed removed and re-added in one go ends up subscribed.
    for (const PendingActions::Removal &removal : m_pending.QueuedRemovals())
        callbackSupport::RemoveSubscription(*client, removal.subscriptionId, removal.title, m_host);
    QList<AddRequestQueue::Request> adds;
    for (const PendingActions::Add &add : m_pending.QueuedAdds())
        adds.append({QString(), add.url, PendingActions::CategoryFor(category, add.folders)});
    if (adds.size() <= kAddsSentAtOnce) {
        for (const AddRequestQueue::Request &add : adds)
            callbackSupport::RequestAddSubscription(m_host, client, add.title, add.url, true, QString(),
                                                    QString(), add.category);
        return;
    }
    // Many go out a slice at a time after the dialog has closed.
    AddRequestQueue::Instance().Enqueue(m_host, client, adds);
}

void frmAddSubscription::AddSubsItemToCheckedList(const QModelIndex &row, bool checked)
{
    const auto *model = qobject_cast<const FeedListModel *>(row.model());
    if (!model || !model->IsFeed(row))
        return;
    m_pending.RowToggled({model->UrlOf(row), model->TitleOf(row), model->FoldersAbove(row), true},
                         model->IsSubscribed(row), model->SubscriptionIdOf(row), checked);
    UpdateOkCaption();
}

void frmAddSubscription::AddSubsArrayToCheckedList(const QModelIndexList &rows, bool checked)
{
    for (const QModelIndex &row : rows) {
        auto *model = const_cast<FeedListModel *>(qobject_cast<const FeedListModel *>(row.model()));
        if (model)
            model->SetChecked(row, checked); // the model's toggle queues the action
    }
}

void frmAddSubscription::AddSubsToCheckedList(FeedListPanel &list, bool checked)
{
    AddSubsArrayToCheckedList(list.Model().FeedRows(), checked);
}

void frmAddSubscription::UpdateOkCaption()
{
    const int tab = ui->tabController->currentIndex();
    const FeedListPanel *list = ListOfTab(tab);
    ui->cmdOK->setText(PendingActions::OkCaption(tab == SearchTabIndex, list != nullptr,
                                                 m_pending.CountActions(),
                                                 list && list->CurrentRow().isValid()));
}

void frmAddSubscription::OnTabChanged(int index)
{
    if (!m_switching && m_pending.CountActions().any()) {
        // Ask first: stay on the list until the question has been answered.
        m_requestedTab = index;
        const QSignalBlocker quiet(ui->tabController);
        ui->tabController->setCurrentIndex(m_currentTab);
        m_switchTimer.start();
        return;
    }
    m_currentTab = index;
    EnterTab(index);
    UpdateOkCaption();
}

void frmAddSubscription::OnSwitchTimer()
{
    if (AskPendingChanges() != DialogAnswer::No) {
        // The question has already emptied the queue on Yes, so this adds the list's current row.
        if (FeedListPanel *list = ListOfTab(m_currentTab))
            PerformActions(*list, ListCategory(m_currentTab));
    }
    m_switching = true;
    ui->tabController->setCurrentIndex(m_requestedTab);
    m_switching = false;
}

DialogAnswer frmAddSubscription::AskPendingChanges()
{
    const QString activity =
        m_currentTab == ImportTabIndex ? QStringLiteral("Importing") : QStringLiteral("Browsing");
    const PendingActions::Question q = PendingActions::BuildQuestion(activity, m_pending.CountActions());
    const DialogAnswer answer = fromMessageBoxCode(AskQuestion(this, q.sentence, q.question, q.kind));
    if (answer != DialogAnswer::No)
        m_pending.Reset();
    return answer;
}

void frmAddSubscription::EnterTab(int index)
{
    if (!m_requests)
        return;
    try {
        if (index == DirectoryTab)
            EnterDirectoryTab();
        else if (index == SearchTabIndex)
            EnterSearchTab();
        else if (index == ImportTabIndex)
            EnterImportTab();
    } catch (const std::exception &e) {
        qCWarning(lcAddSub) << "cannot open the tab:" << e.what();
    }
}

void frmAddSubscription::RememberCategoryChoice(const QString &key, bool checked)
{
    try {
        SetConsumerSettingBool(*GetClient(), kConsumer, kDefaults, key, checked);
    } catch (const std::exception &e) {
        qCWarning(lcAddSub) << "cannot save" << key << e.what();
    }
}

bool frmAddSubscription::CategoryChoiceWanted(const QString &key)
{
    return GetConsumerSetting(*GetClient(), key, QStringLiteral("1"), kConsumer, kDefaults) ==
           QLatin1String("1");
}

void frmAddSubscription::EnterDirectoryTab()
{
    if (!m_rootLoaded) {
        m_browseTab->ClearRoots();
        m_browseTab->List().Clear();
        m_pending.Reset();
        m_rootLoaded = true;
        m_requests->RequestRootList(this);
    }
    m_browseTab->UseCategory().setChecked(CategoryChoiceWanted(kBrowsePref));
}

void frmAddSubscription::EventRootOPMLCallback(qint32 answer)
{
    auto &client = *GetClient();
    HandleGuard result(client, client.GetHandleValue(answer, QStringLiteral("Result")));
    if (!result.isValid()) {
        ShowAlert(
            this, QStringLiteral("Failed to retrieve the Top Subscription Lists file from the Internet."),
            QStringLiteral("Please make sure you connected to the internet and are allowing HTTP network "
                           "communications."));
        return;
    }
    m_browseTab->ShowRoots(m_requests->ReadRootRows(result.get())); // selects row 0, which asks for it
}

void frmAddSubscription::RequestSubList(const QString &url)
{
    if (url.isEmpty() || !m_requests)
        return;
    m_browseTab->List().Clear();
    m_pending.Reset();
    m_browseTab->ShowLoading(true);
    m_requests->RequestOutlineList(this, DirectoryTab, url);
    UpdateOkCaption();
}

void frmAddSubscription::EventSubOPMLCallback(qint32 tag, qint32 answer)
{
    auto &client = *GetClient();
    const bool directory = tag == DirectoryTab;
    HandleGuard result(client, client.GetHandleValue(answer, QStringLiteral("Result")));
    // A failure names the list asked for beside its reason, an answer inside its result.
    const QString url =
        client.GetStringValue(result.isValid() ? result.get() : answer, QStringLiteral("URL"));
    if (directory) {
        const QString selected = m_browseTab->SelectedRootUrl();
        const bool named = !url.isEmpty() && url != quillon::kMissingText;
        // An answer for a list the user has left is dropped, whether it failed or not.
        if ((result.isValid() && !named) || (named && !selected.isEmpty() && url != selected))
            return;
    }
    if (directory)
        m_browseTab->ShowLoading(false);
    if (!result.isValid()) {
        if (!directory)
            m_importTab->Show(ImportTab::View::Grid);
        ShowAlert(this, QStringLiteral("Failed to retrieve the Subscription List file from the Internet."),
                  QStringLiteral("Please make sure you connected to the intenet & are allowing HTTP network "
                                 "communications."));
        return;
    }
    FeedListPanel &list = directory ? m_browseTab->List() : m_importTab->List();
    ShowOutlines(list, result.get(), 4);
    if (!directory) {
        m_importTab->Show(list.Model().FeedCount() > 0 ? ImportTab::View::Grid : ImportTab::View::NoData);
        m_importTab->SetImportAll(false);
    }
    UpdateOkCaption();
}

void frmAddSubscription::ShowOutlines(FeedListPanel &list, Handle result, int folderRowType)
{
    auto &client = *GetClient();
    list.Clear();
    HandleGuard nodes(client, client.GetHandleValue(result, QStringLiteral("SubscriptionList")));
    if (!nodes.isValid())
        return;
    OutlineWalk walk(client, list.Model(), folderRowType, m_requests->Subscribed());
    walk.Walk(nodes.get(), 0);
}

void frmAddSubscription::EnterSearchTab()
{
    if (!m_searchTab->HasSources())
        m_requests->RequestSearchSources(this);
}

void frmAddSubscription::EventSearchSourcesCallback(qint32 answer)
{
    m_searchTab->SetSources(m_requests->ReadSearchSources(answer));
}

void frmAddSubscription::EnterImportTab()
{
    m_importTab->List().Clear();
    m_pending.Reset();
    m_requests->RequestImportSources(this);
    m_importTab->UseCategory().setChecked(CategoryChoiceWanted(kImportPref));
}

void frmAddSubscription::EventImportSourcesCallback(qint32 answer)
{
    m_importTab->SetSources(m_requests->ReadImportSources(answer)); // the file source comes first
}

void frmAddSubscription::LoadImportSource()
{
    const ImportTab::Source source = m_importTab->CurrentSource();
    m_importTab->List().Clear();
    m_pending.Reset();
    if (source.id.isEmpty()) {
        m_importTab->Show(ImportTab::View::Grid);
        return;
    }
    if (!source.available) {
        m_importTab->Show(ImportTab::View::NoData);
        return;
    }
    m_importTab->Show(ImportTab::View::Loading);
    m_requests->RequestOutlineList(this, ImportTabIndex, source.id);
}

void frmAddSubscription::LoadFile()
{
    const QString path = m_importTab->FilePath();
    if (path.isEmpty() || !m_requests)
        return;
    m_importTab->List().Clear();
    m_pending.Reset();
    m_importTab->Show(ImportTab::View::Loading);
    m_requests->RequestOutlineList(this, ImportTabIndex, AddSubscriptionRequests::LoopbackUrl(path));
}

void frmAddSubscription::USMImportOPMLFile(const QString &path)
{
    ui->tabController->setCurrentIndex(ImportTabIndex);
    m_importTab->SelectSource(0);
    m_importTab->SetFilePath(path);
    LoadFile();
    m_importTab->SetImportAll(false);
}

void frmAddSubscription::PreviewFeed()
{
    const int tab = ui->tabController->currentIndex();
    QString url;
    QString title;
    if (tab == UrlTab) {
        url = m_urlTab->Url();
        title = m_urlTab->UserTitle();
    } else if (tab == SearchTabIndex) {
        url = m_requests ? m_requests->SearchUrl(m_searchTab->CurrentSource(), m_searchTab->Words(),
                                                 m_searchTab->LimitChecked(), m_searchTab->LimitText())
                         : QString();
        title = QStringLiteral("Search (") + m_searchTab->Words() + QStringLiteral(")");
    }
    FeedListPanel *list = ListOfTab(tab);
    const QModelIndex row = list ? list->CurrentRow() : QModelIndex();
    if (list && list->Model().IsFeed(row)) {
        url = list->Model().UrlOf(row);
        title = list->Model().TitleOf(row);
    }
    if (url.isEmpty() || !m_openPreview)
        return;
    if (!m_openPreview(this, title, url))
        return;
    // Adding from the preview of a list row checks the row, as a click would; on the other tabs
    // it adds what the tab holds.
    if (list && list->Model().IsFeed(row))
        list->Model().SetChecked(row, true);
    else if (!list)
        OnOK();
}

void frmAddSubscription::Dispose()
{
    m_switchTimer.stop();
    m_pending.Reset();
    m_requests.reset();
    m_host.clear();
}
