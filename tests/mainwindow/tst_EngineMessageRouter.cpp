#include "CBUpdateSub.h"
#include "LocalHttpServer.h"
#include "MainWindowTest.h"
#include "TestFiles.h"
#include "TreeIcons.h"
#include "categoriesUtils.h"
#include "commonUtils.h"
#include "frmLogWindow.h"

#include <QSignalSpy>

using namespace categoriesUtils;

// Engine messages as the main window meets them, and the refreshes they lead to.
class tst_EngineMessageRouter : public MainWindowTest
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { QVERIFY(m_server.listen()); }
    void burstWhileIgnoringEndsInOneRefreshAtSecondFlush();
    void ownBindingChangesAndAddsLeaveTheTreeAlone();
    void questionsAndAnswersReachTheirHandlersUntilTheEngineEnds();
    void changesShowWithoutAReload();

private:
    LocalHttpServer m_server;
};

void tst_EngineMessageRouter::burstWhileIgnoringEndsInOneRefreshAtSecondFlush()
{
    QList<qint32> ids;
    for (int i = 0; i < 10; ++i)
        ids << f->add(QStringLiteral("Feed %1").arg(i));
    frmMainWindow &window = f->open();
    const int before = window.RefreshCount();

    window.SetIgnoreMessages(true);
    for (const qint32 id : ids)
        f->other->BindItem("OLCONSUMER", "NEWS", id, 1);
    QTRY_COMPARE(window.StatusText(), "Adding: Feed 9");
    window.Run();
    window.Run();
    QCOMPARE(window.RefreshCount(), before);

    window.SetIgnoreMessages(false);
    window.Run();
    QCOMPARE(window.RefreshCount(), before);
    window.Run();
    QCOMPARE(window.RefreshCount(), before + 1);
    QCOMPARE(window.StatusText(), QString());
    window.Run();
    QCOMPARE(window.RefreshCount(), before + 1);
    QVERIFY(FindNodeByPath(window.Tree(), "Feed 5")->image() == QLatin1String("checked"));

    // Replies the window waits for: the refresh comes with the last one.
    window.QueueAnUpdate();
    window.QueueAnUpdate();
    window.Run();
    QCOMPARE(window.RefreshCount(), before + 1);
    window.Run();
    QCOMPARE(window.RefreshCount(), before + 2);

    // Without the flag a change shows at once.
    f->other->BindItem("OLCONSUMER", "NEWS", ids.first(), 1);
    QTRY_COMPARE(window.RefreshCount(), before + 3);
    QCOMPARE(window.StatusText(), "Removing: Feed 0");
}

void tst_EngineMessageRouter::ownBindingChangesAndAddsLeaveTheTreeAlone()
{
    const qint32 id = f->add("Mine");
    frmMainWindow &window = f->open();
    const int before = window.RefreshCount();
    const int nodes = window.Tree().count();
    const QString key = FindNodeByPath(window.Tree(), "Mine")->key();

    // Adds of nothing and messages nobody knows change nothing; the engine echoes the window's
    // own binding with it as ORIGINATOR.
    window.SetStatusText("idle");
    f->deliver("SubscriptionAdded", {{"SUBSCRIPTIONID", 0}});
    f->deliver("SubscriptionAdded", {{"SUBSCRIPTIONID", -237237}});
    f->deliver("NoSuchMessage", {{"SUBSCRIPTIONID", 1}});
    f->deliver("SubscriptionBindingChanged",
               {{"ORIGINATOR", "CONFIGCONSUMER"}, {"SubscriptionBindFlag", "TRUE"}, {"SUBSCRIPTIONID", id}});
    window.Run();
    QCOMPARE(window.StatusText(), "idle");
    QCOMPARE(window.Tree().count(), nodes);
    f->client->BindItem("OLCONSUMER", "NEWS", id, 1);
    // The engine sends in order: once a later add is filed (which needs no refresh), the echo was handled.
    f->add("Arrived", "Inbox~~~Later");
    QTRY_VERIFY(FindNodeByPath(window.Tree(), "Inbox~~~Later~~~Arrived"));
    QCOMPARE(window.StatusText(), "Adding: Arrived");
    QCOMPARE(window.Tree().count(), nodes + 3);
    window.Run();
    window.Run();
    QCOMPARE(window.RefreshCount(), before);
    QCOMPARE(FindNodeByPath(window.Tree(), "Mine")->key(), key);

    // Another consumer's change to the same subscription does show.
    f->deliver("SubscriptionBindingChanged",
               {{"ORIGINATOR", "OLCONSUMER"}, {"SubscriptionBindFlag", "FALSE"}, {"SUBSCRIPTIONID", id}});
    QCOMPARE(window.RefreshCount(), before + 1);
    QCOMPARE(window.StatusText(), "Removing: Mine");
}

void tst_EngineMessageRouter::questionsAndAnswersReachTheirHandlersUntilTheEngineEnds()
{
    const qint32 a = f->add("Alpha-1");
    const qint32 b = f->add("Bravo-2");
    const qint32 c = f->add("Charlie-3");
    frmMainWindow &window = f->open();
    // Two more arrive while the first question is open; each is asked once, in order.
    bool first = true;
    f->prompts.onAsk = [&](Prompt &prompt) {
        if (prompt.kind != PromptKind::EnclosureWarning || !std::exchange(first, false))
            return;
        f->deliver("PromptForDownload", {{"SUBSCRIPTIONID", b}});
        f->deliver("PromptForDownload", {{"SUBSCRIPTIONID", c}});
    };
    f->deliver("PromptForDownload", {{"SUBSCRIPTIONID", a}});
    const QStringList asked = f->prompts.texts(PromptKind::EnclosureWarning);
    QCOMPARE(asked.size(), 3);
    const QStringList titles{"Alpha-1", "Bravo-2", "Charlie-3"};
    for (int i = 0; i < 3; ++i)
        QVERIFY2(asked.at(i).contains(titles.at(i)), qPrintable(asked.at(i)));

    // Without the question the general choice is copied to the subscription.
    SetConsumerSetting(*f->other, "MEDIACONSUMER", "Settings", "PromptForAutoDownload", "0");
    SetConsumerSetting(*f->other, "MEDIACONSUMER", "Settings", "EnableAutoDownload", "1");
    f->deliver("PromptForDownload", {{"SUBSCRIPTIONID", b}});
    QCOMPARE(f->prompts.texts(PromptKind::EnclosureWarning).size(), 3);
    QCOMPARE(f->setting("MEDIACONSUMER", SubscriptionSpecificsSection(b), "EnableAutoDownload"), "1");

    f->deliver("LoginRequired", {{"SUBSCRIPTIONID", c}});
    QCOMPARE(f->prompts.texts(PromptKind::UserNameAndPassword).size(), 1);
    QVERIFY(f->prompts.texts(PromptKind::UserNameAndPassword).first().contains("Charlie-3"));

    // An answer delivered through the update callback refreshes and selects its subscription.
    const qint32 other = f->add("Second");
    window.SelectRowByID(a);
    const int before = window.RefreshCount();
    HandleGuard answer(*f->client, f->client->NewBag());
    HandleGuard result(*f->client, f->client->NewBag());
    f->client->SetLongValue(result.get(), "SUBSCRIPTIONID", other);
    f->client->SetHandleValue(answer.get(), "Result", result.get());
    auto callback = std::make_shared<CBUpdateSub>();
    callback->Setup(&window);
    callback->DeliverResult(answer.get());
    QCOMPARE(window.RefreshCount(), before + 1);
    QCOMPARE(window.SelectedSubscriptionId(), other);

    // An import brings a minimized window back; the engine's end closes it.
    QSignalSpy unloaded(&window, &frmMainWindow::Unloaded);
    window.showMinimized();
    f->deliver("ImportOPML", {{"PATH", "/tmp/list.opml"}});
    QVERIFY(!window.isMinimized());
    QVERIFY(window.StatusText().endsWith("/tmp/list.opml"));
    f->engine.core().announceTermination();
    QTRY_COMPARE(unloaded.count(), 1);
    QVERIFY(!window.isVisible());
}

void tst_EngineMessageRouter::changesShowWithoutAReload()
{
    m_server.serve("/eight", LocalHttpServer::rss("Eight Days", 8));
    f->engine.core().startUpdating();
    frmMainWindow &window = f->open();
    const auto add = [&](const QString &url) {
        return EngineCalls::AddSubscription(*f->other, QString(), url, "News", {"OLCONSUMER"});
    };
    const qint32 id = add(m_server.url("/eight").toString());
    const qint32 gone = add(m_server.url("/gone").toString());
    const qint32 words = add("linux news");
    const auto row = [&](qint32 of) { return f->model()->IndexOf(FindSubscriptionNode(window.Tree(), of)); };
    const auto unread = [](const QModelIndex &at) {
        return at.data(CategoryTreeModel::UnreadCountRole).toInt();
    };
    const auto failed = [&](qint32 of) { return row(of).data(CategoryTreeModel::FailedRole).toBool(); };
    const auto ticksUntil = [&](const std::function<bool()> &shown) {
        return QTest::qWaitFor([&] { return window.Run(), shown(); }, 15000);
    };

    // The first updates name the feed by its title and bring its count, drawn beside the name
    // and never part of it (the category adds up), and mark the failing feeds with their reason.
    QVERIFY(ticksUntil([&] {
        return row(id).data() == "Eight Days" && unread(row(id)) == 8 && failed(gone) && failed(words);
    }));
    QCOMPARE(unread(row(id).parent()), 8);
    QVERIFY(!failed(id));
    QCOMPARE(row(gone).data(Qt::ForegroundRole).value<QColor>(), TreeIcons::kFailedColor);
    QCOMPARE(row(gone).data(Qt::ToolTipRole).toString(),
             "Error: HTTP 404 Not Found\n" + m_server.url("/gone").toString());
    QCOMPARE(row(words).data(Qt::ToolTipRole).toString(),
             "Error: linux news is not a valid address\nlinux news");
    QVERIFY(TestFiles::read(f->logPath()).contains("Subscription update failed"));
    QVERIFY(TestFiles::read(frmLogWindow::EngineLogFile(*f->client))
                .contains(QStringLiteral("Subscription %1: Error: HTTP 404").arg(gone).toUtf8()));
    window.SelectRowByID(id);
    QCOMPARE(f->label("lblDetailsHeading"), "Details for 'Eight Days'");
    const int refreshes = window.RefreshCount();

    // A read mark the mail delivery reports reaches the details and the tree at a tick.
    const QList<qint32> articles = EngineCalls::ArticleIds(EngineCalls::Request(
        *f->other, {{"REQUEST", "PENDINGARTICLES"}, {"SUBSCRIPTIONID", QString::number(id)}}));
    QCOMPARE(articles.size(), 8);
    EngineCalls::Request(*f->other, {{"REQUEST", "SETREADSTATE"}, {"READ", "1"}}, articles.mid(0, 3));
    QVERIFY(ticksUntil([&] { return f->label("lblNewArticles") == "5"; }));
    QCOMPARE(f->label("lblReadArticles"), "3");
    QCOMPARE(unread(row(id).parent()), 5);
    QCOMPARE(window.RefreshCount(), refreshes);
}

QTEST_MAIN(tst_EngineMessageRouter)
#include "tst_EngineMessageRouter.moc"
