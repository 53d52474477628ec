#include "AddRequestQueue.h"
#include "FirstRunSetup.h"
#include "LocalHttpServer.h"
#include "MainWindowTest.h"
#include "TestFiles.h"
#include "TestRows.h"
#include "categoriesUtils.h"
#include "frmWelcome.h"

#include <QCheckBox>
#include <QDir>
#include <QPushButton>
#include <QSignalSpy>

// The first start over the real engine: readers found on disk, the welcome dialog answered as a
// user would, and what ends up stored and requested.
class tst_FirstRunSetup : public MainWindowTest
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void choicesAreStoredAndRequested_data();
    void choicesAreStoredAndRequested();

private:
    QTemporaryDir m_home;
    LocalHttpServer m_server;
};

void tst_FirstRunSetup::initTestCase()
{
    QVERIFY(m_home.isValid());
    // The engine looks for other readers in the user's folders: these are the test's own.
    qputenv("HOME", m_home.path().toUtf8());
    qputenv("XDG_CONFIG_HOME", m_home.filePath("config").toUtf8());
    qputenv("XDG_DATA_HOME", m_home.filePath("data").toUtf8());
    QVERIFY(m_server.listen());
    for (const char *name : {"world", "science"}) {
        m_server.serve(QStringLiteral("/%1.xml").arg(name),
                       QByteArray("<rss version=\"2.0\"><channel><title>") + name +
                           "</title><item><title>first</title><guid>1</guid></item></channel></rss>");
    }
}

void tst_FirstRunSetup::init()
{
    QDir(m_home.path()).removeRecursively();
    QVERIFY(QDir().mkpath(m_home.path()));
    MainWindowTest::init();
    // The starter list, served from here instead of the shipped one.
    QVERIFY(TestFiles::write(
        m_home.filePath("starter.opml"),
        "<opml version=\"2.0\"><body><outline text=\"News\"><outline text=\"World\" xmlUrl=\"" +
            m_server.url("/world.xml").toEncoded() + "\"/></outline><outline text=\"Science\" xmlUrl=\"" +
            m_server.url("/science.xml").toEncoded() + "\"/></body></opml>"));
    SetConsumerSetting(*f->other, "ENGINE", QString(), "OEM_Starter_URL", m_home.filePath("starter.opml"));
    f->engine.core().startUpdating();
    f->open();
    QTRY_COMPARE(GetSetting("Quillon", "Quillon", "ConfigStartupComplete"), "1");
}

void tst_FirstRunSetup::choicesAreStoredAndRequested_data()
{
    QTest::addColumn<bool>("newsboatFound");
    QTest::addColumn<QStringList>("ticked"); // boxes the user changes before accepting
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<QStringList>("offered");  // the import boxes shown
    QTest::addColumn<QStringList>("imported"); // readers whose import ran
    QTest::addColumn<QStringList>("stored");   // "consumer/section/key=value"
    QTest::addColumn<bool>("starterFeeds");

    const QString ol = "OLCONSUMER/OutlookDefaults/", types = "ENGINE/FileTypeHandling/";
    const QStringList none, newsboat = {"Import my subscriptions from Newsboat"};
    const QStringList mailbox = {ol + "MakeNewPST_fileName=-237237", ol + "RadioSubPlacement=2",
                                 ol + "SubFolderTitle=Corvell for Outlook"};
    row("no reader found, defaults accepted", false, none, true, none, none,
        mailbox + QStringList{types + "RSS=1", types + "OPML=1"}, true);
    row("starter feeds and an import both chosen", true, QStringList{"chkStarterFeeds"}, true, newsboat, none,
        mailbox, true);
    row("import only, a new store, no OPML files", true, QStringList{"chkNewPST", "chkOPML"}, true, newsboat,
        QStringList{"newsboat"},
        QStringList{ol + "MakeNewPST_fileName=Corvell.pst", ol + "MakeNewPST_DisplayName=Corvell for Outlook",
                    ol + "MakeNewPST_mode=0", ol + "RadioSubPlacement=-237237", types + "OPML=0",
                    types + "FEED=1"},
        false);
    row("dialog closed keeps nothing", true, none, false, newsboat, none,
        QStringList{types + "RSS=-237237", ol + "MakeNewPST_fileName=-237237",
                    ol + "RadioSubPlacement=-237237"},
        false);
}

void tst_FirstRunSetup::choicesAreStoredAndRequested()
{
    QFETCH(bool, newsboatFound);
    QFETCH(QStringList, ticked);
    QFETCH(bool, accepted);
    QFETCH(QStringList, imported);
    QFETCH(QStringList, stored);
    QFETCH(bool, starterFeeds);
    if (newsboatFound)
        QVERIFY(TestFiles::write(m_home.filePath(".newsboat/urls"),
                                 m_server.url("/world.xml").toEncoded() + "\n"));

    QStringList importsRun;
    FirstRunSetup setup(*f->window, f->client, [&](const QString &id) { importsRun << id; });
    QStringList shown;
    setup.SetWelcomeRunner([&](frmWelcome &dialog) {
        for (QCheckBox *box : dialog.findChildren<QCheckBox *>()) {
            if (box->objectName().startsWith("chkImport") && !box->isHidden())
                shown << box->text();
        }
        for (const QString &name : ticked)
            dialog.findChild<QCheckBox *>(name)->click();
        if (accepted)
            dialog.findChild<QPushButton *>("cmdAdd")->click();
    });
    QSignalSpy drained(&AddRequestQueue::Instance(), &AddRequestQueue::Drained);
    setup.Run();

    QTEST(shown, "offered");
    QCOMPARE(importsRun, imported);
    QCOMPARE(GetSetting("Quillon", "Quillon", "import"), QString());
    for (const QString &entry : stored) {
        const QStringList where = entry.section('=', 0, 0).split('/');
        QCOMPARE(f->setting(where.at(0), where.at(1), where.at(2)), entry.section('=', 1));
    }
    QCOMPARE(f->window->StatusText() == FirstRunSetup::kStatusUploading, starterFeeds || !imported.isEmpty());
    const bool listAsked = std::any_of(f->submitted.cbegin(), f->submitted.cend(),
                                       [](const auto &bag) { return bag.value("REQUEST") == "FETCHOPML"; });
    QCOMPARE(listAsked, starterFeeds);
    if (!starterFeeds)
        return;
    // The starter feeds are subscribed under their folders, fetched and shown in the window.
    QVERIFY(drained.wait(10000));
    QTRY_VERIFY_WITH_TIMEOUT(categoriesUtils::FindNodeByPath(f->window->Tree(), "News"), 10000);
    QTRY_VERIFY_WITH_TIMEOUT(m_server.requestCount("/science.xml") > 0, 10000);
}

QTEST_MAIN(tst_FirstRunSetup)
#include "tst_FirstRunSetup.moc"
