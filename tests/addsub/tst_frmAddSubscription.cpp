#include "AddRequestQueue.h"
#include "AddSubscriptionEntry.h"
#include "CLog.h"
#include "ClientAccess.h"
#include "DeliverySettings.h"
#include "FolderPlan.h"
#include "LocalHttpServer.h"
#include "MainWindowTest.h"
#include "OpmlImport.h"
#include "SubscriptionGridModel.h"
#include "TestFiles.h"
#include "TestRows.h"
#include "callbackSupport.h"
#include "categoriesUtils.h"
#include "frmAddSubscription.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTableView>
#include <QTemporaryDir>

using quillon::Handle;

class tst_frmAddSubscription : public MainWindowTest
{
    Q_OBJECT

private:
    frmAddSubscription &openWizard(const QStringList &categories = {});
    FeedListModel *browse(int rows, const QStringList &categories = {});
    template <typename T> T *child(const char *name) { return m_wizard->findChild<T *>(QLatin1String(name)); }
    void pressOk() { child<QPushButton>("cmdOK")->click(); }
    // One field of every add request the wizard submitted through the window's client.
    [[nodiscard]] QStringList sent(const char *field) const
    {
        QStringList values;
        for (const auto &fields : f->submitted)
            if (fields.value("REQUEST") == QLatin1String("ADD"))
                values << fields.value(field);
        return values;
    }

    std::unique_ptr<frmAddSubscription> m_wizard;
    LocalHttpServer m_server;

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_server.listen()); }
    void init();
    void cleanup();
    void urlTabSendsTheCategoryAndLoginAsChosen();
    void addedFeedIsNamedAlikeEverywhere_data();
    void addedFeedIsNamedAlikeEverywhere();
    void searchIsKeptAsAFeedUnderSearchFeeds();
    void listTabAsksBeforeLeavingActionsAndAddsWhatIsChosen();
    void directoryWalksOutlinesAndDropsStaleAnswers();
    void importTabAndStarterFeedsFillNestedCategories();
};

void tst_frmAddSubscription::init()
{
    MainWindowTest::init();
    callbackSupport::PendingAddCount() = 0; // answers an earlier case left unheard
    f->open();
    ClientAccess::SetEngineClient(f->client);
}

void tst_frmAddSubscription::cleanup()
{
    m_wizard.reset();
    ClientAccess::SetEngineClient(nullptr);
    MainWindowTest::cleanup();
}

frmAddSubscription &tst_frmAddSubscription::openWizard(const QStringList &categories)
{
    m_wizard = std::make_unique<frmAddSubscription>();
    m_wizard->SetHost(f->window.get());
    m_wizard->Initialize(categories);
    m_wizard->show();
    return *m_wizard;
}

// Opens the wizard on the directory tab; its list once it has more than rows rows, else null.
FeedListModel *tst_frmAddSubscription::browse(int rows, const QStringList &categories)
{
    openWizard(categories);
    child<QTabWidget>("tabController")->setCurrentIndex(1);
    auto *model = qobject_cast<FeedListModel *>(child<QTreeView>("grdSubList")->model());
    return QTest::qWaitFor([&] { return model->rowCount() > rows; }, 10000) ? model : nullptr;
}

void tst_frmAddSubscription::urlTabSendsTheCategoryAndLoginAsChosen()
{
    const auto add = [&](int category, const QString &user, const QString &password) {
        openWizard({"Work"});
        child<QLineEdit>("txtURL")->setText("http://127.0.0.1:9/feed");
        child<QLineEdit>("txtUserName")->setText(user);
        child<QLineEdit>("txtPasswordField")->setText(password);
        child<QComboBox>("cboCategories_enterTab")->setCurrentIndex(category);
        QCOMPARE(child<QPushButton>("cmdOK")->text(), "&Add");
        pressOk();
        QVERIFY(m_wizard->result() == QDialog::Accepted);
    };
    add(0, "ann", QString());
    add(1, QString(), "secret");
    add(3, "ann", "secret");
    // "Automatic" lets the engine choose; a name without a password is neither.
    QCOMPARE(sent("CATEGORY"), (QStringList{"-237237", "New Subscriptions", "Work"}));
    QCOMPARE(sent("USER"), (QStringList{"-237237", "-237237", "ann"}));
    QCOMPARE(sent("PASSWORD"), (QStringList{"-237237", "-237237", "secret"}));
    // The status line names the address when no title was given.
    QTRY_VERIFY(f->window->StatusText().startsWith("Added: ") || f->window->RefreshCount() > 0);
}

void tst_frmAddSubscription::addedFeedIsNamedAlikeEverywhere_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("userTitle");
    QTest::addColumn<QString>("name");
    row("title given", "/daily", "My Daily", "My Daily");
    row("no title", "/daily", "", "Daily Notes");
    row("feed found through a web page", "/page", "", "Page Feed");
}

void tst_frmAddSubscription::addedFeedIsNamedAlikeEverywhere()
{
    QFETCH(QString, path);
    QFETCH(QString, userTitle);
    QFETCH(QString, name);
    f->engine.core().startUpdating();
    m_server.serve("/daily", LocalHttpServer::rss("Daily Notes", 4));
    m_server.serve("/page",
                   "<html><head><link rel=\"alternate\" type=\"application/rss+xml\" href=\"/feed\">",
                   "text/html");
    m_server.serve("/feed", LocalHttpServer::rss("Page Feed", 4));
    openWizard();
    child<QLineEdit>("txtURL")->setText(m_server.url(path).toString());
    child<QLineEdit>("txtUserTitle")->setText(userTitle);
    pressOk();
    QCOMPARE(f->window->StatusText(), "Uploading Requests To Server");
    // The first update's name and counts reach the window at a tick: no reload, no restart.
    frmMainWindow &window = *f->window;
    qint32 id = 0;
    QTRY_VERIFY_WITH_TIMEOUT(
        [&] {
            window.Run();
            id = window.SelectedSubscriptionId();
            return id > 0 && f->node(name) && f->label("lblNewArticles") == "4";
        }(),
        15000);
    QCOMPARE(f->label("lblDetailsHeading"), "Details for '" + name + "'");
    const auto *grid =
        qobject_cast<SubscriptionGridModel *>(window.findChild<QTableView *>("grdSubscriptions")->model());
    QCOMPARE(grid->index(grid->RowOf(id), SubscriptionGridModel::ColumnTitle).data().toString(), name);
    // The mail delivery names its folder the same way.
    QCOMPARE(FolderPlan::ownName(DeliverySettings(*f->other).place(id).value()), name);
    QVERIFY(f->delivered().contains(id));
}

void tst_frmAddSubscription::searchIsKeptAsAFeedUnderSearchFeeds()
{
    // A local search source, beside the engine's store, that answers in RSS.
    QVERIFY(TestFiles::write(QDir(f->engine.dataFolder()).filePath("searchsources.json"),
                             QStringLiteral(R"({"sources": [{"guid": "{local}", "title": "Local", "template":
        "%1?q={keywords}&n={limit}", "defaultLimit": 10, "minLimit": 1, "maxLimit": 50}]})")
                                 .arg(m_server.url("/search").toString())
                                 .toUtf8()));
    m_server.serve("/search?q=green%20tea&n=5", LocalHttpServer::rss("Results", 5));
    f->engine.core().startUpdating();

    openWizard();
    child<QTabWidget>("tabController")->setCurrentIndex(2);
    auto *source = child<QComboBox>("cboSearchSources");
    QTRY_VERIFY(source->findText("Local") >= 0);
    source->setCurrentIndex(source->findText("Local"));
    QCOMPARE(child<QLabel>("lblLimitRange")->text(), "( 1 to 50 )");
    QCOMPARE(child<QPushButton>("cmdOK")->text(), "&Add Search");
    child<QLineEdit>("txtSearchString")->setText("green tea");
    child<QCheckBox>("chkSearchLimit")->setChecked(true);
    child<QLineEdit>("txtSearchLimit")->setText("5");
    pressOk();

    QCOMPARE(sent("TITLE"), QStringList{"Search Local for 'green tea'"});
    QCOMPARE(sent("CATEGORY"), QStringList{"Search Feeds"});
    QVERIFY2(sent("URL").constLast().startsWith("search?"), qPrintable(sent("URL").constLast()));
    // The engine fetches the search through the source's template.
    QTRY_COMPARE_WITH_TIMEOUT(m_server.requestCount("/search?q=green%20tea&n=5"), 1, 15000);
}

void tst_frmAddSubscription::listTabAsksBeforeLeavingActionsAndAddsWhatIsChosen()
{
    FeedListModel *model = nullptr;
    QVERIFY((model = browse(3, {"Work"})));
    auto *tabs = child<QTabWidget>("tabController");
    child<QTreeView>("grdSubList")->setCurrentIndex(model->index(3, 0));
    model->Toggle(model->index(0, 0));
    model->Toggle(model->index(1, 0));

    // No: the tab changes, nothing is sent and the question named both feeds.
    f->prompts.answers[int(PromptKind::YesNo)] = {7};
    tabs->setCurrentIndex(0);
    QCOMPARE(tabs->currentIndex(), 1); // stays until the question is answered
    QTRY_COMPARE(tabs->currentIndex(), 0);
    QCOMPARE(f->prompts.asked.constLast().mainText, "While Browsing, you have indicated 2Feeds to be added.");
    QVERIFY(sent("URL").isEmpty());
    QCOMPARE(m_wizard->CountActions().adds, 2);

    // Yes empties the queue first, so what is sent is the list's current row: kept as it is.
    QVERIFY((model = browse(3, {"Work"})));
    tabs = child<QTabWidget>("tabController");
    child<QTreeView>("grdSubList")->setCurrentIndex(model->index(3, 0));
    model->Toggle(model->index(0, 0));
    f->prompts.answers[int(PromptKind::YesNo)] = {6};
    tabs->setCurrentIndex(2);
    QTRY_COMPARE(tabs->currentIndex(), 2);
    QCOMPARE(f->prompts.asked.constLast().mainText, "While Browsing, you have indicated 1 feed to be added.");
    QCOMPARE(sent("URL"), QStringList{model->UrlOf(model->index(3, 0))});
    QCOMPARE(m_wizard->CountActions().any(), false);

    // The shipped directory browses with no network: its root list, then row 0's feeds.
    QVERIFY((model = browse(3, {"Work"})));
    QVERIFY(child<QTreeView>("grdRootList")->model()->rowCount() >= 4);
    QCOMPARE(child<QTreeView>("grdRootList")->model()->headerData(0, Qt::Horizontal).toString(),
             "Feed Lists");

    // Nothing checked and the category box clear: the highlighted row alone, with no category.
    child<QComboBox>("cboCategories_BrowseTab")->setCurrentIndex(3);
    child<QCheckBox>("chkCategories_BrowseTab")->setChecked(false);
    child<QTreeView>("grdSubList")->setCurrentIndex(model->index(1, 0));
    QCOMPARE(child<QPushButton>("cmdOK")->text(), "&Add Selection");
    const QString highlighted = model->index(1, 1).data().toString();
    pressOk();
    QCOMPARE(sent("URL").mid(1), QStringList{highlighted});
    QCOMPARE(sent("CATEGORY").mid(1), QStringList{"-237237"});

    // Checked rows with the box set: each checked feed under the chosen category, removals first.
    QVERIFY((model = browse(3, {"Work"})));
    child<QCheckBox>("chkCategories_BrowseTab")->setChecked(true);
    child<QComboBox>("cboCategories_BrowseTab")->setCurrentIndex(3);
    model->Toggle(model->index(0, 0));
    model->Toggle(model->index(2, 0));
    QCOMPARE(child<QPushButton>("cmdOK")->text(), "&Add Checked");
    pressOk();
    QCOMPARE(sent("URL").mid(2),
             (QStringList{model->UrlOf(model->index(0, 0)), model->UrlOf(model->index(2, 0))}));
    QCOMPARE(sent("CATEGORY").mid(2), (QStringList{"Work", "Work"}));
}

void tst_frmAddSubscription::directoryWalksOutlinesAndDropsStaleAnswers()
{
    // A directory of the user's own: the root list on the local server.
    m_server.serve(
        "/root.opml",
        QStringLiteral(
            "<opml><body><outline text=\"Odd\" xmlUrl=\"%1\"/><outline text=\"Gone\" xmlUrl=\"%2\"/>"
            "</body></opml>")
            .arg(m_server.url("/odd.opml").toString(), m_server.url("/gone.opml").toString())
            .toUtf8(),
        "text/x-opml");
    m_server.serve(
        "/odd.opml",
        "<opml><body><outline text=\"\"><outline text=\"Deep&#9;Feed\" description=\"a&#9;b\" "
        "xmlUrl=\"http://d/\"/>"
        "</outline><outline text=\"Both\" xmlUrl=\"http://both/\"><outline text=\"Hidden\" "
        "xmlUrl=\"http://h/\"/>"
        "</outline><outline text=\"Folder\"><outline xmlUrl=\"http://untitled/\"/></outline></body></opml>",
        "text/x-opml");
    SetConsumerSetting(*f->client, "ENGINE", QString(), "OEM_Browse_URL",
                       m_server.url("/root.opml").toString());
    openWizard();
    child<QTabWidget>("tabController")->setCurrentIndex(1);
    auto *sub = child<QTreeView>("grdSubList");
    auto *model = qobject_cast<FeedListModel *>(sub->model());
    QTRY_VERIFY_WITH_TIMEOUT(model->FeedCount() == 3, 10000);
    // The untitled folder adds no row, but its feed sits one level deeper; a feed's children
    // are not walked; tabs become two blanks.
    const QModelIndex deep = model->index(0, 0);
    QCOMPARE(model->TitleOf(deep), "Deep  Feed");
    QCOMPARE(model->DescriptionOf(deep), "a  b");
    QCOMPARE(deep.data(FeedListModel::LevelRole).toInt(), 2);
    QCOMPARE(model->rowCount(model->index(1, 0)), 0);
    const QModelIndex folder = model->index(2, 0);
    QCOMPARE(folder.data(FeedListModel::RowTypeRole).toInt(), 4);
    QCOMPARE(model->TitleOf(model->index(0, 0, folder)), "<no title>");
    QCOMPARE(model->FoldersAbove(model->index(0, 0, folder)), QStringList{"Folder"});

    // The user moves to the second list, which fails: the alert, and the tab stays usable.
    f->prompts.answers.clear();
    auto *roots = child<QTreeView>("grdRootList");
    roots->setCurrentIndex(roots->model()->index(1, 0));
    QTRY_VERIFY_WITH_TIMEOUT(!f->prompts.asked.isEmpty(), 10000);
    QCOMPARE(f->prompts.asked.constLast().mainText,
             "Failed to retrieve the Subscription List file from the Internet.");
    // A late answer for the list the user left does not replace what is shown.
    roots->setCurrentIndex(roots->model()->index(0, 0));
    QTRY_VERIFY_WITH_TIMEOUT(model->FeedCount() == 3, 10000);
    HandleGuard stale(*f->client, f->client->NewBag());
    HandleGuard result(*f->client, f->client->NewBag());
    f->client->SetStringValue(result.get(), "URL", m_server.url("/gone.opml").toString());
    f->client->SetHandleValue(stale.get(), "Result", result.get());
    m_wizard->EventSubOPMLCallback(frmAddSubscription::DirectoryTab, stale.get());
    QCOMPARE(model->FeedCount(), 3);
    // Nor does a late failure for it alert.
    const qsizetype asked = f->prompts.asked.size();
    HandleGuard failed(*f->client, f->client->NewBag());
    f->client->SetStringValue(failed.get(), "URL", m_server.url("/gone.opml").toString());
    m_wizard->EventSubOPMLCallback(frmAddSubscription::DirectoryTab, failed.get());
    QCOMPARE(f->prompts.asked.size(), asked);
}

void tst_frmAddSubscription::importTabAndStarterFeedsFillNestedCategories()
{
    QTemporaryDir dir;
    const auto write = [&](const QString &name, const QByteArray &text) {
        return TestFiles::write(dir.filePath(name), text) ? dir.filePath(name) : QString();
    };
    QVERIFY(OpmlImport::IsValidOPMLFile(
        write("ok.opml", "<opml><body><outline><outline xmlUrl=\"http://x/\"/></outline></body></opml>")));
    QVERIFY(!OpmlImport::IsValidOPMLFile(
        write("none.opml", "<opml><body><outline text=\"empty\"/></body></opml>")));
    QVERIFY(!OpmlImport::IsValidOPMLFile(write("rss.xml", "<rss><channel/></rss>")));
    QVERIFY(!OpmlImport::IsValidOPMLFile(dir.filePath("missing.opml")));

    QString opml = QStringLiteral(
        "<opml version=\"2.0\"><body><outline text=\"A\"><outline text=\"B\"><outline text=\"C\">");
    for (int i = 0; i < 40; ++i)
        opml += QStringLiteral("<outline text=\"F%1\" xmlUrl=\"http://127.0.0.1:9/f%1\"/>").arg(i);
    opml += QStringLiteral("</outline></outline></outline><outline text=\"Top\" "
                           "xmlUrl=\"http://127.0.0.1:9/top\"/></body></opml>");
    const QString path = write("My Feeds (2024).opml", opml.toUtf8());
    QVERIFY(!path.isEmpty());

    openWizard();
    child<QTabWidget>("tabController")->setCurrentIndex(3);
    // An empty path asks for nothing.
    const qsizetype before = f->submitted.size();
    child<QPushButton>("cmdLoadFile")->click();
    QCOMPARE(f->submitted.size(), before);

    m_wizard->USMImportOPMLFile(path);
    QCOMPARE(f->submitted.constLast().value("URL"),
             "file://loopback/" + QString(path).replace(QLatin1Char(' '), "%20"));
    auto *model = qobject_cast<FeedListModel *>(child<QTreeView>("grdImportList")->model());
    QTRY_VERIFY_WITH_TIMEOUT(model->FeedCount() == 41, 10000);
    // Folders a level each, their feeds at depth + 1.
    QList<int> levels;
    for (QModelIndex at = model->index(0, 0); at.isValid(); at = model->index(0, 0, at))
        levels << at.data(FeedListModel::LevelRole).toInt();
    QCOMPARE(levels, (QList<int>{0, 1, 2, 4}));

    // Check all, "Automatic": the folders become the categories, sent a slice at a time.
    child<QCheckBox>("chkImportAll")->click();
    QCOMPARE(m_wizard->CountActions().adds, 41);
    QSignalSpy drained(&AddRequestQueue::Instance(), &AddRequestQueue::Drained);
    pressOk();
    QVERIFY(drained.wait(10000));
    const QStringList categories = sent("CATEGORY");
    QCOMPARE(categories.size(), 41);
    QCOMPARE(categories.first(), "A~~~B~~~C");
    QCOMPARE(categories.constLast(), "-237237");
    // The main window shows them as nested folders once the answers are in.
    QTRY_VERIFY_WITH_TIMEOUT(categoriesUtils::FindNodeByPath(f->window->Tree(), "A~~~B~~~C"), 15000);

    // The shipped starter list subscribes each feed under its folder.
    QVERIFY(QFile::exists(OpmlImport::DefaultFeedsPath()));
    OpmlImport::AddDefaultFeeds(f->window.get(), f->client);
    QVERIFY(drained.wait(10000));
    const QStringList starters = sent("CATEGORY").mid(41);
    QVERIFY(starters.size() >= 3);
    QVERIFY(!starters.contains(QString()) && !starters.contains("-237237"));
}

QTEST_MAIN(tst_frmAddSubscription)
#include "tst_frmAddSubscription.moc"
