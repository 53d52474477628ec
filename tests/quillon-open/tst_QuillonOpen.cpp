#include "AddSubscriptionEntry.h"
#include "CBConnect.h"
#include "ClientAccess.h"
#include "ConsumerSettings.h"
#include "DaemonProcess.h"
#include "EngineCalls.h"
#include "LocalHttpServer.h"
#include "LocalSettings.h"
#include "TestFiles.h"
#include "TestRows.h"
#include "WebArticleView.h"
#include "frmAddSubscription.h"
#include "frmMainWindow.h"
#include "frmPreviewSubscription.h"

#include <QApplication>
#include <QPushButton>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>
#include <QTreeView>

namespace {
const QByteArray kFeed = "<rss version=\"2.0\"><channel><title>Opened Feed</title><link>http://x/</link>"
                         "<item><title>One</title><guid>1</guid></item></channel></rss>";
// The preview's web view is set up before the application exists.
const bool kWebPrepared = (WebArticleView::PrepareProcess(), true);
} // namespace

// What the desktop opens with quillon-open reaches the engine and a running ConfigConsumer.
class tst_QuillonOpen : public QObject
{
    Q_OBJECT
    QTemporaryDir m_home;
    LocalHttpServer m_server;

private Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        LocalSettings::SetBaseFolder(m_home.path());
        QVERIFY(m_server.listen());
        m_server.serve("/feed.xml", kFeed);
    }
    void cleanup() { ClientAccess::SetEngineClient(nullptr); }
    void openedAddressesReachConfigConsumer_data();
    void openedAddressesReachConfigConsumer();
};

void tst_QuillonOpen::openedAddressesReachConfigConsumer_data()
{
    QTest::addColumn<QString>("argument");
    QTest::addColumn<bool>("windowRuns");
    QTest::addColumn<QString>("preview");
    // The subscription's address, the import list's top rows, or nothing: refused.
    QTest::addColumn<QString>("shown");
    const QString feed = m_server.url("/feed.xml").toString();
    const QString link = "127.0.0.1:" + QString::number(m_server.url("/").port()) + "/feed.xml";
    TestFiles::write(m_home.filePath("self.atom"),
                     "<feed xmlns=\"http://www.w3.org/2005/Atom\"><link rel=\"self\" "
                     "href=\"" +
                         feed.toUtf8() + "\"/></feed>");
    TestFiles::write(m_home.filePath("page.xml"), "<html><body/></html>");
    TestFiles::write(m_home.filePath("my feeds.opml"),
                     "<opml><body><outline text=\"News\"><outline xmlUrl=\"http://h/a\"/>"
                     "</outline><outline text=\"Tech\"><outline xmlUrl=\"http://h/b\"/>"
                     "</outline></body></opml>");
    row("feed link, preview off", "feed://" + link, true, "0", feed);
    row("feed link, preview first", "feed:http://" + link, true, "1", feed);
    row("feed link, no ConfigConsumer", "feed://" + link, false, "1", feed);
    row("feed file by its own address", m_home.filePath("self.atom"), true, "0", feed);
    row("OPML file opens the import tab", m_home.filePath("my feeds.opml"), true, "1", "News|Tech");
    row("feeds:// is https", "FEEDS://h/x", false, "0", "https://h/x");
    row("feed:host/path", "feed:h/x?a=1", false, "0", "http://h/x?a=1");
    row("feed: alone", "feed:", false, "0", "");
    row("a page is no feed", m_home.filePath("page.xml"), true, "0", "");
    row("missing file", m_home.filePath("none.opml"), true, "0", "");
}

void tst_QuillonOpen::openedAddressesReachConfigConsumer()
{
    QFETCH(QString, argument);
    QFETCH(bool, windowRuns);
    QFETCH(QString, preview);
    QFETCH(QString, shown);
    DaemonProcess engine;
    QVERIFY2(engine.start(), qPrintable(engine.errorText()));
    const auto other = engine.newClient();
    other->Connect("OLCONSUMER", std::make_shared<EngineCalls::IgnoreMessages>());
    SetConsumerSetting(*other, "ENGINE", "", "ShowPreviewWindowOnAutoSubscribe", preview);
    const auto client = engine.newClient();
    ClientAccess::SetEngineClient(client);
    frmMainWindow window;
    window.SetEntryPoints(AddSubscriptionEntry::EntryPoints());
    if (windowRuns) {
        auto connection = std::make_shared<CBConnect>();
        connection->Setup(&window);
        client->Connect("CONFIGCONSUMER", connection);
        window.SetClient(client);
        window.show();
    }
    // The preview is answered with its add button; the import list is read, then closed.
    int previews = 0;
    QStringList rows;
    QTimer answer;
    connect(&answer, &QTimer::timeout, this, [&] {
        for (QWidget *w : QApplication::topLevelWidgets()) {
            auto *grid = w->findChild<QTreeView *>("grdImportList");
            if (qobject_cast<frmPreviewSubscription *>(w) && w->isVisible() &&
                !w->findChild<QWidget *>("txtLoading")->isVisible() && ++previews) {
                w->findChild<QPushButton *>("cmdAdd")->click();
            } else if (qobject_cast<frmAddSubscription *>(w) && w->isVisible() &&
                       grid->model()->rowCount() > 1) {
                for (int i = 0; i < grid->model()->rowCount(); ++i)
                    rows << grid->model()->index(i, 0).data().toString();
                qobject_cast<QDialog *>(w)->reject();
            }
        }
    });
    answer.start(50);

    QProcess opener;
    auto env = QProcessEnvironment::systemEnvironment();
    env.insert("QUILLON_ENGINE_SOCKET", engine.socketName());
    opener.setProcessEnvironment(env);
    const auto open = [&] {
        opener.start(DaemonProcess::executable("quillon-open"), {argument});
        QTRY_COMPARE_WITH_TIMEOUT(opener.state(), QProcess::NotRunning, 40000);
    };
    open();
    QCOMPARE(opener.exitCode(), shown.isEmpty() ? 1 : 0);
    if (shown.contains('|'))
        QTRY_COMPARE_WITH_TIMEOUT(rows, shown.split('|'), 20000);
    if (shown.isEmpty() || shown.contains('|')) {
        QCOMPARE(EngineCalls::ConsumerItems(*other, "*").size(), 0);
        return;
    }
    QTRY_COMPARE_WITH_TIMEOUT(EngineCalls::ConsumerItems(*other, "OLCONSUMER").size(), 1, 20000);
    QCOMPARE(EngineCalls::ItemText(*other, EngineCalls::ConsumerItems(*other, "*").constFirst(), "URL"),
             shown);
    QCOMPARE(previews, windowRuns && preview == "1" ? 1 : 0);
    // Opened again: still one subscription, and no second preview.
    open();
    QVERIFY(opener.readAllStandardOutput().startsWith("Already subscribed"));
    QCOMPARE(EngineCalls::ConsumerItems(*other, "*").size(), 1);
    QCOMPARE(previews, windowRuns && preview == "1" ? 1 : 0);
    // Named by its address until the window reads the list again, then by the feed's title.
    if (windowRuns)
        QTRY_VERIFY(window.Tree().topLevelCount() == 1 &&
                    window.Tree().topLevelNode(0)->text().contains("feed", Qt::CaseInsensitive));
}

QTEST_MAIN(tst_QuillonOpen)

#include "tst_QuillonOpen.moc"
