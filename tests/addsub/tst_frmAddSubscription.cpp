#include "AddRequestQueue.h"
#include "AddSubscriptionEntry.h"
#include "CLog.h"
#include "ClientAccess.h"
#include "DeliverySettings.h"
#include "FolderPlan.h"
#include "LocalHttpServer.h"
#include "MainWindowFixture.h"
#include "OpmlImport.h"
#include "SubscriptionGridModel.h"
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

class tst_frmAddSubscription : public QObject
{
    Q_OBJECT

private:
    frmAddSubscription &openWizard(const QStringList &categories = {});
    FeedListModel *browse(int rows, const QStringList &categories = {});
    template <typename T> T *child(const char *name) { return m_wizard->findChild<T *>(QLatin1String(name)); }
    void pressOk() { child<QPushButton>("cmdOK")->click(); }

    std::unique_ptr<MainWindowFixture> m_fixture;
    // What the wizard submitted through the window's client: its add requests.
    [[nodiscard]] QList<QHash<QString, QString>> adds() const
    {
        QList<QHash<QString, QString>> found;
        for (const auto &fields : m_fixture->submitted)
            if (fields.value("REQUEST") == QLatin1String("ADD"))
                found << fields;
        return found;
    }

    quillon::SubscribeClientPtr m_client;
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
    void listTabAddsTheHighlightedRowOrWhatIsChecked();
    void leavingAListWithActionsAsksFirst();
    void directoryWalksOutlinesAndDropsStaleAnswers();
    void importTabLoadsNestedFilesIntoNestedCategories();
    void starterFeedsAndFileChecks();
};

void tst_frmAddSubscription::init()
{
    m_fixture = std::make_unique<MainWindowFixture>();
    QVERIFY(m_fixture->ready());
    callbackSupport::PendingAddCount() = 0; // answers an earlier case left unheard
    m_fixture->open();
    m_client = m_fixture->client;
    ClientAccess::SetEngineClient(m_client);
}

void tst_frmAddSubscription::cleanup()
{
    m_wizard.reset();
    ClientAccess::SetEngineClient(nullptr);
    const auto client = m_fixture->client;
    m_fixture.reset();
    m_client.reset();
    QCOMPARE(client->LiveHandleCount(), 0);
}

frmAddSubscription &tst_frmAddSubscription::openWizard(const QStringList &categories)
{
    m_wizard = std::make_unique<frmAddSubscription>();
    m_wizard->SetHost(m_fixture->window.get());
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
    const auto sent = adds();
    QCOMPARE(sent.size(), 3);
    QCOMPARE(sent[0].value("CATEGORY"), "-237237"); // "Automatic": the engine chooses
    QCOMPARE(sent[0].value("USER"), "-237237");     // a name without a password: neither
    QCOMPARE(sent[1].value("CATEGORY"), "New Subscriptions");
    QCOMPARE(sent[1].value("PASSWORD"), "-237237");
    QCOMPARE(sent[2].value("CATEGORY"), "Work");
    QCOMPARE(sent[2].value("USER"), "ann");
    QCOMPARE(sent[2].value("PASSWORD"), "secret");
    // The status line names the address when no title was given.
    QTRY_VERIFY(m_fixture->window->StatusText().startsWith("Added: ") ||
                m_fixture->window->RefreshCount() > 0);
}

void tst_frmAddSubscription::addedFeedIsNamedAlikeEverywhere_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("userTitle");
    QTest::addColumn<QString>("name");
    QTest::newRow("title given") << "/daily"
                                 << "My Daily"
                                 << "My Daily";
    QTest::newRow("no title") << "/daily"
                              << ""
                              << "Daily Notes";
    QTest::newRow("feed found through a web page") << "/page"
                                                   << ""
                                                   << "Page Feed";
}

void tst_frmAddSubscription::addedFeedIsNamedAlikeEverywhere()
{
    QFETCH(QString, path);
    QFETCH(QString, userTitle);
    QFETCH(QString, name);
    m_fixture->engine.core().startUpdating();
    m_server.serve("/daily", LocalHttpServer::rss("Daily Notes", 4));
    m_server.serve("/page",
                   "<html><head><link rel=\"alternate\" type=\"application/rss+xml\" href=\"/feed\">",
                   "text/html");
    m_server.serve("/feed", LocalHttpServer::rss("Page Feed", 4));
    openWizard();
    child<QLineEdit>("txtURL")->setText(m_server.url(path).toString());
    child<QLineEdit>("txtUserTitle")->setText(userTitle);
    pressOk();
    QCOMPARE(m_fixture->window->StatusText(), "Uploading Requests To Server");
    // The first update's name and counts reach the window at a tick: no reload, no restart.
    frmMainWindow &window = *m_fixture->window;
    qint32 id = 0;
    QTRY_VERIFY_WITH_TIMEOUT(
        [&] {
            window.Run();
            id = window.SelectedSubscriptionId();
            return id > 0 && m_fixture->node(name) && m_fixture->label("lblNewArticles") == "4";
        }(),
        15000);
    QCOMPARE(m_fixture->label("lblDetailsHeading"), "Details for '" + name + "'");
    const auto *grid =
        qobject_cast<SubscriptionGridModel *>(window.findChild<QTableView *>("grdSubscriptions")->model());
    QCOMPARE(grid->index(grid->RowOf(id), SubscriptionGridModel::ColumnTitle).data().toString(), name);
    // The mail delivery names its folder the same way.
    QCOMPARE(FolderPlan::ownName(DeliverySettings(*m_fixture->other).place(id).value()), name);
    QVERIFY(m_fixture->delivered().contains(id));
}

void tst_frmAddSubscription::searchIsKeptAsAFeedUnderSearchFeeds()
{
    // A local search source, beside the engine's store, that answers in RSS.
    QFile sources(QDir(m_fixture->engine.dataFolder()).filePath("searchsources.json"));
    QVERIFY(sources.open(QIODevice::WriteOnly));
    sources.write(QStringLiteral(R"({"sources": [{"guid": "{local}", "title": "Local", "template":
        "%1?q={keywords}&n={limit}", "defaultLimit": 10, "minLimit": 1, "maxLimit": 50}]})")
                      .arg(m_server.url("/search").toString())
                      .toUtf8());
    sources.close();
    m_server.serve("/search?q=green%20tea&n=5", LocalHttpServer::rss("Results", 5));
    m_fixture->engine.core().startUpdating();

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

    const auto add = adds().constLast();
    QCOMPARE(add.value("TITLE"), "Search Local for 'green tea'");
    QCOMPARE(add.value("CATEGORY"), "Search Feeds");
    QVERIFY2(add.value("URL").startsWith("search?"), qPrintable(add.value("URL")));
    // The engine fetches the search through the source's template.
    QTRY_COMPARE_WITH_TIMEOUT(m_server.requestCount("/search?q=green%20tea&n=5"), 1, 15000);
}

void tst_frmAddSubscription::listTabAddsTheHighlightedRowOrWhatIsChecked()
{
    // The shipped directory browses with no network: its root list, then row 0's feeds.
    FeedListModel *model = browse(2, {"Work"});
    QVERIFY(model);
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
    QCOMPARE(adds().size(), 1);
    QCOMPARE(adds().first().value("URL"), highlighted);
    QCOMPARE(adds().first().value("CATEGORY"), "-237237");

    // Checked rows with the box set: each checked feed under the chosen category, removals first.
    model = browse(2, {"Work"});
    QVERIFY(model);
    child<QCheckBox>("chkCategories_BrowseTab")->setChecked(true);
    child<QComboBox>("cboCategories_BrowseTab")->setCurrentIndex(3);
    model->Toggle(model->index(0, 0));
    model->Toggle(model->index(2, 0));
    QCOMPARE(child<QPushButton>("cmdOK")->text(), "&Add Checked");
    pressOk();
    const auto sent = adds().mid(1);
    QCOMPARE(sent.size(), 2);
    QCOMPARE(sent[0].value("URL"), model->UrlOf(model->index(0, 0)));
    QCOMPARE(sent[1].value("CATEGORY"), "Work");
}

void tst_frmAddSubscription::leavingAListWithActionsAsksFirst()
{
    FeedListModel *model = browse(3);
    QVERIFY(model);
    auto *tabs = child<QTabWidget>("tabController");
    child<QTreeView>("grdSubList")->setCurrentIndex(model->index(3, 0));
    model->Toggle(model->index(0, 0));
    model->Toggle(model->index(1, 0));

    // No: the tab changes, nothing is sent and the question named both feeds.
    m_fixture->prompts.answers[int(PromptKind::YesNo)] = {7};
    tabs->setCurrentIndex(0);
    QCOMPARE(tabs->currentIndex(), 1); // stays until the question is answered
    QTRY_COMPARE(tabs->currentIndex(), 0);
    QCOMPARE(m_fixture->prompts.asked.constLast().mainText,
             "While Browsing, you have indicated 2Feeds to be added.");
    QVERIFY(adds().isEmpty());
    QCOMPARE(m_wizard->CountActions().adds, 2);

    // Yes empties the queue first, so what is sent is the list's current row: kept as it is.
    model = browse(3);
    QVERIFY(model);
    tabs = child<QTabWidget>("tabController");
    child<QTreeView>("grdSubList")->setCurrentIndex(model->index(3, 0));
    model->Toggle(model->index(0, 0));
    m_fixture->prompts.answers[int(PromptKind::YesNo)] = {6};
    tabs->setCurrentIndex(2);
    QTRY_COMPARE(tabs->currentIndex(), 2);
    QCOMPARE(m_fixture->prompts.asked.constLast().mainText,
             "While Browsing, you have indicated 1 feed to be added.");
    QCOMPARE(adds().size(), 1);
    QCOMPARE(adds().first().value("URL"), model->UrlOf(model->index(3, 0)));
    QCOMPARE(m_wizard->CountActions().any(), false);
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
    SetConsumerSetting(*m_client, "ENGINE", QString(), "OEM_Browse_URL",
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
    m_fixture->prompts.answers.clear();
    auto *roots = child<QTreeView>("grdRootList");
    roots->setCurrentIndex(roots->model()->index(1, 0));
    QTRY_VERIFY_WITH_TIMEOUT(!m_fixture->prompts.asked.isEmpty(), 10000);
    QCOMPARE(m_fixture->prompts.asked.constLast().mainText,
             "Failed to retrieve the Subscription List file from the Internet.");
    // A late answer for the list the user left does not replace what is shown.
    roots->setCurrentIndex(roots->model()->index(0, 0));
    QTRY_VERIFY_WITH_TIMEOUT(model->FeedCount() == 3, 10000);
    HandleGuard stale(*m_client, m_client->NewBag());
    HandleGuard result(*m_client, m_client->NewBag());
    m_client->SetStringValue(result.get(), "URL", m_server.url("/gone.opml").toString());
    m_client->SetHandleValue(stale.get(), "Result", result.get());
    m_wizard->EventSubOPMLCallback(frmAddSubscription::DirectoryTab, stale.get());
    QCOMPARE(model->FeedCount(), 3);
    // Nor does a late failure for it alert.
    const qsizetype asked = m_fixture->prompts.asked.size();
    HandleGuard failed(*m_client, m_client->NewBag());
    m_client->SetStringValue(failed.get(), "URL", m_server.url("/gone.opml").toString());
    m_wizard->EventSubOPMLCallback(frmAddSubscription::DirectoryTab, failed.get());
    QCOMPARE(m_fixture->prompts.asked.size(), asked);
}

void tst_frmAddSubscription::importTabLoadsNestedFilesIntoNestedCategories()
{
    QTemporaryDir dir;
    const QString path = dir.filePath("My Feeds (2024).opml");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QString opml = QStringLiteral(
        "<opml version=\"2.0\"><body><outline text=\"A\"><outline text=\"B\"><outline text=\"C\">");
    for (int i = 0; i < 40; ++i)
        opml += QStringLiteral("<outline text=\"F%1\" xmlUrl=\"http://127.0.0.1:9/f%1\"/>").arg(i);
    opml += QStringLiteral("</outline></outline></outline><outline text=\"Top\" "
                           "xmlUrl=\"http://127.0.0.1:9/top\"/></body></opml>");
    file.write(opml.toUtf8());
    file.close();

    openWizard();
    auto *tabs = child<QTabWidget>("tabController");
    tabs->setCurrentIndex(3);
    // An empty path asks for nothing.
    const qsizetype before = m_fixture->submitted.size();
    child<QPushButton>("cmdLoadFile")->click();
    QCOMPARE(m_fixture->submitted.size(), before);

    m_wizard->USMImportOPMLFile(path);
    QCOMPARE(m_fixture->submitted.constLast().value("URL"),
             "file://loopback/" + QString(path).replace(QLatin1Char(' '), "%20"));
    auto *grid = child<QTreeView>("grdImportList");
    auto *model = qobject_cast<FeedListModel *>(grid->model());
    QTRY_VERIFY_WITH_TIMEOUT(model->FeedCount() == 41, 10000);
    const QModelIndex a = model->index(0, 0);
    const QModelIndex b = model->index(0, 0, a);
    const QModelIndex c = model->index(0, 0, b);
    QCOMPARE(a.data(FeedListModel::LevelRole).toInt(), 0);
    QCOMPARE(b.data(FeedListModel::LevelRole).toInt(), 1);
    QCOMPARE(c.data(FeedListModel::LevelRole).toInt(), 2);
    QCOMPARE(model->index(0, 0, c).data(FeedListModel::LevelRole).toInt(), 4); // feeds at depth + 1

    // Check all, "Automatic": the folders become the categories, sent a slice at a time.
    child<QCheckBox>("chkImportAll")->click();
    QCOMPARE(m_wizard->CountActions().adds, 41);
    QSignalSpy drained(&AddRequestQueue::Instance(), &AddRequestQueue::Drained);
    pressOk();
    QVERIFY(drained.wait(10000));
    const auto sent = adds();
    QCOMPARE(sent.size(), 41);
    QCOMPARE(sent.first().value("CATEGORY"), "A~~~B~~~C");
    QCOMPARE(sent.constLast().value("CATEGORY"), "-237237");
    // The main window shows them as nested folders once the answers are in.
    QTRY_VERIFY_WITH_TIMEOUT(categoriesUtils::FindNodeByPath(m_fixture->window->Tree(), "A~~~B~~~C"), 15000);
}

void tst_frmAddSubscription::starterFeedsAndFileChecks()
{
    QTemporaryDir dir;
    const auto write = [&](const char *name, const QByteArray &text) {
        QFile f(dir.filePath(QLatin1String(name)));
        return f.open(QIODevice::WriteOnly) && f.write(text) == text.size() ? f.fileName() : QString();
    };
    QVERIFY(OpmlImport::IsValidOPMLFile(
        write("ok.opml", "<opml><body><outline><outline xmlUrl=\"http://x/\"/></outline></body></opml>")));
    QVERIFY(!OpmlImport::IsValidOPMLFile(
        write("none.opml", "<opml><body><outline text=\"empty\"/></body></opml>")));
    QVERIFY(!OpmlImport::IsValidOPMLFile(write("rss.xml", "<rss><channel/></rss>")));
    QVERIFY(!OpmlImport::IsValidOPMLFile(dir.filePath("missing.opml")));

    // The shipped starter list subscribes each feed under its folder.
    QVERIFY(QFile::exists(OpmlImport::DefaultFeedsPath()));
    QSignalSpy drained(&AddRequestQueue::Instance(), &AddRequestQueue::Drained);
    OpmlImport::AddDefaultFeeds(m_fixture->window.get(), m_client);
    QVERIFY(drained.wait(10000));
    const auto sent = adds();
    QVERIFY(sent.size() >= 3);
    QVERIFY(std::all_of(sent.cbegin(), sent.cend(), [](const auto &add) {
        return !add.value("CATEGORY").isEmpty() && add.value("CATEGORY") != QLatin1String("-237237");
    }));
}

QTEST_MAIN(tst_frmAddSubscription)
#include "tst_frmAddSubscription.moc"
