#include "AddSubscriptionEntry.h"
#include "ClientAccess.h"
#include "LocalHttpServer.h"
#include "MainWindowFixture.h"
#include "categoriesUtils.h"
#include "frmAddSubscription.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>

using quillon::Handle;

namespace {

// The wizard's engine client, keeping what every submitted request asked for.
class RequestRecordingClient : public ForwardingSubscribeClient
{
public:
    using ForwardingSubscribeClient::ForwardingSubscribeClient;
    qint32 SubmitRequest(Handle bag, quillon::CallbackPtr callback) override
    {
        QHash<QString, QString> fields;
        for (const char *name : {"REQUEST", "URL", "TITLE", "CATEGORY", "USER", "PASSWORD"})
            fields.insert(QLatin1String(name), GetStringValue(bag, QLatin1String(name)));
        submitted << fields;
        return ForwardingSubscribeClient::SubmitRequest(bag, std::move(callback));
    }
    [[nodiscard]] QList<QHash<QString, QString>> adds() const
    {
        QList<QHash<QString, QString>> found;
        for (const auto &fields : submitted)
            if (fields.value(QStringLiteral("REQUEST")) == QLatin1String("ADD"))
                found << fields;
        return found;
    }
    QList<QHash<QString, QString>> submitted;
};

QByteArray rss(const QString &title, int items)
{
    QString out = QStringLiteral("<?xml version=\"1.0\"?><rss version=\"2.0\"><channel><title>%1</title>").arg(title);
    for (int i = 1; i <= items; ++i)
        out += QStringLiteral("<item><guid>%1-%2</guid><title>Item %2</title></item>").arg(title).arg(i);
    return (out + QStringLiteral("</channel></rss>")).toUtf8();
}

} // namespace

class tst_frmAddSubscription : public QObject
{
    Q_OBJECT

private:
    frmAddSubscription &openWizard(const QStringList &categories = {});
    template <typename T> T *child(const char *name) { return m_wizard->findChild<T *>(QLatin1String(name)); }
    void pressOk() { child<QPushButton>("cmdOK")->click(); }

    std::unique_ptr<MainWindowFixture> m_fixture;
    std::shared_ptr<RequestRecordingClient> m_client;
    std::unique_ptr<frmAddSubscription> m_wizard;
    LocalHttpServer m_server;

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_server.listen()); }
    void init();
    void cleanup();
    void urlTabSendsTheCategoryAndLoginAsChosen();
    void addedFeedIsFetchedAndShownInTheTree();
    void searchIsKeptAsAFeedUnderSearchFeeds();
    void listTabAddsTheHighlightedRowOrWhatIsChecked();
    void leavingAListWithActionsAsksFirst();
};

void tst_frmAddSubscription::init()
{
    m_fixture = std::make_unique<MainWindowFixture>();
    QVERIFY(m_fixture->ready());
    m_fixture->open();
    m_client = std::make_shared<RequestRecordingClient>(m_fixture->client);
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

void tst_frmAddSubscription::urlTabSendsTheCategoryAndLoginAsChosen()
{
    const auto add = [&](int category, const QString &user, const QString &password) {
        openWizard({QStringLiteral("Work")});
        child<QLineEdit>("txtURL")->setText(QStringLiteral("http://127.0.0.1:9/feed"));
        child<QLineEdit>("txtUserName")->setText(user);
        child<QLineEdit>("txtPasswordField")->setText(password);
        child<QComboBox>("cboCategories_enterTab")->setCurrentIndex(category);
        QCOMPARE(child<QPushButton>("cmdOK")->text(), QStringLiteral("&Add"));
        pressOk();
        QVERIFY(m_wizard->result() == QDialog::Accepted);
    };
    add(0, QStringLiteral("ann"), QString());
    add(1, QString(), QStringLiteral("secret"));
    add(3, QStringLiteral("ann"), QStringLiteral("secret"));
    const auto adds = m_client->adds();
    QCOMPARE(adds.size(), 3);
    QCOMPARE(adds[0].value("CATEGORY"), QStringLiteral("-237237")); // "Automatic": the engine chooses
    QCOMPARE(adds[0].value("USER"), QStringLiteral("-237237"));      // a name without a password: neither
    QCOMPARE(adds[1].value("CATEGORY"), QStringLiteral("New Subscriptions"));
    QCOMPARE(adds[1].value("PASSWORD"), QStringLiteral("-237237"));
    QCOMPARE(adds[2].value("CATEGORY"), QStringLiteral("Work"));
    QCOMPARE(adds[2].value("USER"), QStringLiteral("ann"));
    QCOMPARE(adds[2].value("PASSWORD"), QStringLiteral("secret"));
    // The status line names the address when no title was given.
    QTRY_VERIFY(m_fixture->window->StatusText().startsWith(QStringLiteral("Added: ")) ||
                m_fixture->window->RefreshCount() > 0);
}

void tst_frmAddSubscription::addedFeedIsFetchedAndShownInTheTree()
{
    m_fixture->engine.core().startUpdating();
    m_server.serve("/daily", rss("Daily Notes", 4));
    openWizard();
    child<QLineEdit>("txtURL")->setText(m_server.url("/daily").toString());
    child<QLineEdit>("txtUserTitle")->setText(QStringLiteral("My Daily"));
    pressOk();
    QCOMPARE(m_fixture->window->StatusText(), QStringLiteral("Uploading Requests To Server"));
    qint32 id = 0;
    QTRY_VERIFY_WITH_TIMEOUT((id = m_fixture->window->SelectedSubscriptionId()) > 0 &&
                                 categoriesUtils::FindNodeByPath(m_fixture->window->Tree(), QStringLiteral("My Daily")),
                             15000);
    QTRY_COMPARE_WITH_TIMEOUT(m_server.requestCount("/daily"), 1, 15000);
    // The engine fetched it: the counts reach the window's details.
    QTRY_VERIFY_WITH_TIMEOUT(
        [&] {
            m_fixture->window->DoDisplayRefresh();
            m_fixture->window->SelectRowByID(id);
            return m_fixture->window->findChild<QLabel *>(QStringLiteral("lblNewArticles"))->text() == "4";
        }(),
        15000);
    QVERIFY(m_fixture->delivered().contains(id));
}

void tst_frmAddSubscription::searchIsKeptAsAFeedUnderSearchFeeds()
{
    // A local search source, beside the engine's store, that answers in RSS.
    QFile sources(QDir(m_fixture->engine.dataFolder()).filePath(QStringLiteral("searchsources.json")));
    QVERIFY(sources.open(QIODevice::WriteOnly));
    sources.write(QStringLiteral(R"({"sources": [{"guid": "{local}", "title": "Local", "template":
        "%1?q={keywords}&n={limit}", "defaultLimit": 10, "minLimit": 1, "maxLimit": 50}]})")
                      .arg(m_server.url("/search").toString())
                      .toUtf8());
    sources.close();
    m_server.serve("/search?q=green%20tea&n=5", rss("Results", 5));
    m_fixture->engine.core().startUpdating();

    openWizard();
    m_wizard->findChild<QTabWidget *>(QStringLiteral("tabController"))->setCurrentIndex(2);
    auto *source = child<QComboBox>("cboSearchSources");
    QTRY_VERIFY(source->findText(QStringLiteral("Local")) >= 0);
    source->setCurrentIndex(source->findText(QStringLiteral("Local")));
    QCOMPARE(child<QLabel>("lblLimitRange")->text(), QStringLiteral("( 1 to 50 )"));
    QCOMPARE(child<QPushButton>("cmdOK")->text(), QStringLiteral("&Add Search"));
    child<QLineEdit>("txtSearchString")->setText(QStringLiteral("green tea"));
    child<QCheckBox>("chkSearchLimit")->setChecked(true);
    child<QLineEdit>("txtSearchLimit")->setText(QStringLiteral("5"));
    pressOk();

    const auto add = m_client->adds().constLast();
    QCOMPARE(add.value("TITLE"), QStringLiteral("Search Local for 'green tea'"));
    QCOMPARE(add.value("CATEGORY"), QStringLiteral("Search Feeds"));
    QVERIFY2(add.value("URL").startsWith(QStringLiteral("search?")), qPrintable(add.value("URL")));
    // The engine fetches the search through the source's template.
    QTRY_COMPARE_WITH_TIMEOUT(m_server.requestCount("/search?q=green%20tea&n=5"), 1, 15000);
}

void tst_frmAddSubscription::listTabAddsTheHighlightedRowOrWhatIsChecked()
{
    openWizard({QStringLiteral("Work")});
    auto *tabs = m_wizard->findChild<QTabWidget *>(QStringLiteral("tabController"));
    tabs->setCurrentIndex(1);
    auto *sub = child<QTreeView>("grdSubList");
    // The shipped directory browses with no network: its root list, then row 0's feeds.
    QTRY_VERIFY_WITH_TIMEOUT(child<QTreeView>("grdRootList")->model()->rowCount() >= 4, 10000);
    QCOMPARE(child<QTreeView>("grdRootList")->model()->headerData(0, Qt::Horizontal).toString(),
             QStringLiteral("Feed Lists"));
    QTRY_VERIFY_WITH_TIMEOUT(sub->model()->rowCount() > 2, 10000);

    // Nothing checked and the category box clear: the highlighted row alone, with no category.
    child<QComboBox>("cboCategories_BrowseTab")->setCurrentIndex(3);
    child<QCheckBox>("chkCategories_BrowseTab")->setChecked(false);
    sub->setCurrentIndex(sub->model()->index(1, 0));
    QCOMPARE(child<QPushButton>("cmdOK")->text(), QStringLiteral("&Add Selection"));
    const QString highlighted = sub->model()->index(1, 1).data().toString();
    pressOk();
    QCOMPARE(m_client->adds().size(), 1);
    QCOMPARE(m_client->adds().first().value("URL"), highlighted);
    QCOMPARE(m_client->adds().first().value("CATEGORY"), QStringLiteral("-237237"));

    // Checked rows with the box set: each checked feed under the chosen category, removals first.
    openWizard({QStringLiteral("Work")});
    m_wizard->findChild<QTabWidget *>(QStringLiteral("tabController"))->setCurrentIndex(1);
    sub = child<QTreeView>("grdSubList");
    QTRY_VERIFY_WITH_TIMEOUT(sub->model()->rowCount() > 2, 10000);
    child<QCheckBox>("chkCategories_BrowseTab")->setChecked(true);
    child<QComboBox>("cboCategories_BrowseTab")->setCurrentIndex(3);
    auto *model = qobject_cast<FeedListModel *>(sub->model());
    model->Toggle(model->index(0, 0));
    model->Toggle(model->index(2, 0));
    QCOMPARE(child<QPushButton>("cmdOK")->text(), QStringLiteral("&Add Checked"));
    pressOk();
    const auto adds = m_client->adds().mid(1);
    QCOMPARE(adds.size(), 2);
    QCOMPARE(adds[0].value("URL"), model->UrlOf(model->index(0, 0)));
    QCOMPARE(adds[1].value("CATEGORY"), QStringLiteral("Work"));
}

void tst_frmAddSubscription::leavingAListWithActionsAsksFirst()
{
    openWizard();
    auto *tabs = m_wizard->findChild<QTabWidget *>(QStringLiteral("tabController"));
    tabs->setCurrentIndex(1);
    auto *sub = child<QTreeView>("grdSubList");
    QTRY_VERIFY_WITH_TIMEOUT(sub->model()->rowCount() > 3, 10000);
    auto *model = qobject_cast<FeedListModel *>(sub->model());
    sub->setCurrentIndex(model->index(3, 0));
    model->Toggle(model->index(0, 0));
    model->Toggle(model->index(1, 0));

    // No: the tab changes, nothing is sent and the question named both feeds.
    m_fixture->answers[int(PromptKind::YesNo)] = {7};
    tabs->setCurrentIndex(0);
    QCOMPARE(tabs->currentIndex(), 1); // stays until the question is answered
    QTRY_COMPARE(tabs->currentIndex(), 0);
    QCOMPARE(m_fixture->asked.constLast().text,
             QStringLiteral("While Browsing, you have indicated 2Feeds to be added."));
    QVERIFY(m_client->adds().isEmpty());
    QCOMPARE(m_wizard->CountActions().adds, 2);

    // Yes empties the queue first, so what is sent is the list's current row: kept as it is.
    openWizard();
    tabs = m_wizard->findChild<QTabWidget *>(QStringLiteral("tabController"));
    tabs->setCurrentIndex(1);
    sub = child<QTreeView>("grdSubList");
    QTRY_VERIFY_WITH_TIMEOUT(sub->model()->rowCount() > 3, 10000);
    model = qobject_cast<FeedListModel *>(sub->model());
    sub->setCurrentIndex(model->index(3, 0));
    model->Toggle(model->index(0, 0));
    m_fixture->answers[int(PromptKind::YesNo)] = {6};
    tabs->setCurrentIndex(2);
    QTRY_COMPARE(tabs->currentIndex(), 2);
    QCOMPARE(m_fixture->asked.constLast().text,
             QStringLiteral("While Browsing, you have indicated 1 feed to be added."));
    QCOMPARE(m_client->adds().size(), 1);
    QCOMPARE(m_client->adds().first().value("URL"), model->UrlOf(model->index(3, 0)));
    QCOMPARE(m_wizard->CountActions().any(), false);
}

QTEST_MAIN(tst_frmAddSubscription)
#include "tst_frmAddSubscription.moc"
