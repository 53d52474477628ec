#include "DaemonProcess.h"
#include "DeliveryAgent.h"
#include "DeliveryTestFeeds.h"
#include "DovecotServer.h"
#include "EngineFixture.h"
#include "HandleGuard.h"
#include "ImapStore.h"
#include "LocalHttpServer.h"
#include "LocalSettings.h"
#include "MailStoreOutlook.h"
#include "MaildirProbe.h"
#include "MaildirStore.h"
#include "StoreLocation.h"
#include "SubscriptionListLoader.h"
#include "TestFiles.h"
#include "frmMainWindow.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>

using namespace quillon;
using namespace DeliveryTestFeeds;

// Articles reach a Maildir through the real engine, and what the user does on either side
// follows.
class tst_MailDelivery : public QObject
{
    Q_OBJECT

private:
    qint32 subscribe(const QString &path, const QString &title, const QString &category, int items);
    void bind(qint32 id, qint32 flag) { m_engine->client->BindItem("OLCONSUMER", "NEWS", id, flag); }
    void setSpecific(qint32 id, const QString &key, const QString &value)
    {
        m_engine->setSetting("OLCONSUMER", QStringLiteral("SubscriptionSpecifics_%1").arg(id), key, value);
    }
    void startAgent(std::unique_ptr<MailStore> store = {},
                    std::function<std::optional<DeliveryAgent::Relocation>()> relocate = {},
                    int readPollMs = 50);
    // Fetches again now, past the engine's shortest interval between two fetches of a feed.
    void refetch(qint32 id, const EngineFixture::Fields &changes = {})
    {
        m_skew += 120;
        const qsizetype before = m_engine->updates->size();
        m_engine->update(id, changes);
        QTRY_VERIFY_WITH_TIMEOUT(m_engine->updates->size() > before, 20000);
    }
    qint32 addBound(SubscribeClient &client, const QString &path, const QString &title, int items);

    LocalHttpServer m_server;
    std::unique_ptr<EngineFixture> m_engine;
    std::unique_ptr<QTemporaryDir> m_mail;
    std::unique_ptr<MaildirProbe> m_probe;
    std::unique_ptr<DeliveryAgent> m_agent;
    SubscribeClientPtr m_agentClient;
    qint64 m_skew = 0;

private Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QVERIFY(m_server.listen());
    }
    void init();
    void cleanup();
    void checkedSubscriptionsArriveInTheirFolders();
    void configChangesMoveAndRemoveMessages();
    void seenFlagsFlowBack();
    void mailProgramMovesAndDeletesAreFollowed();
    void killedDeliveryLosesNothingAndCatchesUp();
    void imapAccountGetsTheSameDelivery();
    void oddNamesAndOutagesKeepDelivering();
    void unstorableArticlesFailTheSubscriptionVisibly();
    void newStoreTakesTheMailAlong();
};

void tst_MailDelivery::init()
{
    m_engine = std::make_unique<EngineFixture>();
    QVERIFY(m_engine->engine.isReady());
    m_skew = 0;
    m_engine->startUpdating([this] { return QDateTime::currentDateTimeUtc().addSecs(m_skew); });
    m_mail = std::make_unique<QTemporaryDir>();
    m_probe = std::make_unique<MaildirProbe>(m_mail->filePath("Mail"));
}

void tst_MailDelivery::cleanup()
{
    m_agent.reset();
    if (m_agentClient)
        QCOMPARE(m_agentClient->LiveHandleCount(), 0);
    m_agentClient.reset();
    m_engine.reset();
}

void tst_MailDelivery::startAgent(std::unique_ptr<MailStore> store,
                                  std::function<std::optional<DeliveryAgent::Relocation>()> relocate,
                                  int readPollMs)
{
    m_agentClient = m_engine->engine.newClient();
    DeliveryAgent::Options options;
    options.readPollMs = readPollMs;
    options.replanMs = 3600000; // the tests replan when they want to
    options.relocate = std::move(relocate);
    if (!store)
        store = std::make_unique<MaildirStore>(m_mail->filePath("Mail"));
    const QString index =
        options.relocate ? StoreLocation::indexPath(store->describe()) : m_mail->filePath("index.json");
    m_agent = std::make_unique<DeliveryAgent>(m_agentClient, std::move(store), index, options);
    QString error;
    QVERIFY2(m_agent->start(&error), qPrintable(error));
}

qint32 tst_MailDelivery::subscribe(const QString &path, const QString &title, const QString &category,
                                   int items)
{
    m_server.serve(path, feed(title, 1, items));
    const qint32 id = m_engine->add(m_server.url(path).toString());
    refetch(id, {{"CATEGORY", category}});
    return id;
}

qint32 tst_MailDelivery::addBound(SubscribeClient &client, const QString &path, const QString &title,
                                  int items)
{
    m_server.serve(path, feed(title, 1, items));
    return EngineCalls::AddSubscription(client, QString(), m_server.url(path).toString(), {}, {"OLCONSUMER"});
}

void tst_MailDelivery::checkedSubscriptionsArriveInTheirFolders()
{
    startAgent();
    const qint32 linux = subscribe("/linux", "Linux Weekly", "Tech~~~Linux", 4);
    const qint32 unchecked = subscribe("/other", "Other", "", 2);
    bind(linux, 1);
    const QStringList folder = {"Tech", "Linux", "Linux Weekly"};
    QTRY_COMPARE(m_probe->count(folder), 4);
    QVERIFY(m_probe->exists({"Tech"})); // every level opens in a mail program
    QVERIFY(!m_probe->exists({"Other"}));
    Q_UNUSED(unchecked);

    const QByteArray message = m_probe->first(folder);
    for (const QByteArray &line : QByteArrayList{"Subject: Story 1", "From: Linux Weekly <feed-",
                                                 "X-Feed-URL: " + m_server.url("/linux").toEncoded(),
                                                 "Date: Wed, 01 May 2024 10:01:00 +0000"})
        QVERIFY2(message.contains(line), line.constData());
    // Unread on arrival: still in new/.
    QVERIFY(m_probe->files(folder).first().contains("/new/"));
    QCOMPARE(m_engine->itemBag(linux)->text("ITEMREADCOUNT"), QStringLiteral("0"));

    // Defaults for the next subscription: under a top folder and a named sub-folder, text only.
    for (const auto &[key, value] :
         {std::pair{"TopFolderTitle", "\\Feeds"}, std::pair{"RadioSubPlacement", "1"},
          std::pair{"SubFolderTitle", "Reading"}, std::pair{"Article_Theme", "Plain"}})
        m_engine->setSetting("OLCONSUMER", "OutlookDefaults", key, value);
    const qint32 plain = subscribe("/plain", "Plain Feed", "", 3);
    bind(plain, 1);
    const QStringList plainFolder = {"Feeds", "Reading", "Plain Feed"};
    QTRY_COMPARE(m_probe->count(plainFolder), 3);
    QVERIFY(!m_probe->first(plainFolder).contains("text/html"));
    // The new defaults moved the subscription already delivered along.
    const QStringList moved = {"Feeds", "Reading", "Tech", "Linux", "Linux Weekly"};
    QTRY_COMPARE(m_probe->count(moved), 4);

    // New articles of a bound feed follow as they are fetched.
    m_server.serve("/linux", feed("Linux Weekly", 1, 6));
    refetch(linux);
    QTRY_COMPARE(m_probe->count(moved), 6);
    QCOMPARE(messageIds(*m_probe, moved).size(), 6);
}

void tst_MailDelivery::configChangesMoveAndRemoveMessages()
{
    startAgent();
    const qint32 id = subscribe("/moving", "Moving", "News", 3);
    bind(id, 1);
    QTRY_COMPARE(m_probe->count({"News", "Moving"}), 3);

    // Moves that take the messages along are tst_FolderRename's; "SubMovedInConfig" 1 leaves
    // them, and new articles go to the new place.
    m_engine->setSetting("OLCONSUMER", "OutlookDefaults", "SubMovedInConfig", "1");
    refetch(id, {{"CATEGORY", "Elsewhere"}});
    m_agent->replanFolders();
    QCOMPARE(m_probe->count({"News", "Moving"}), 3);
    m_server.serve("/moving", feed("Moving", 1, 4));
    refetch(id);
    QTRY_COMPARE(m_probe->count({"Elsewhere", "Moving"}), 1);

    // Unchecked with "remove the articles": the delivered messages go.
    bind(id, 0);
    QTRY_COMPARE(m_probe->count({"Elsewhere", "Moving"}), 0);
    // Messages left behind by "SubMovedInConfig" 1 are the user's now.
    QCOMPARE(m_probe->count({"News", "Moving"}), 3);
}

void tst_MailDelivery::seenFlagsFlowBack()
{
    startAgent();
    const qint32 id = subscribe("/seen", "Seen", "", 3);
    bind(id, 1);
    QTRY_COMPARE(m_probe->count({"Seen"}), 3);
    const QStringList files = m_probe->files({"Seen"});
    QVERIFY(m_probe->markSeen(files.at(0)));
    QVERIFY(m_probe->markSeen(files.at(1)));
    QTRY_COMPARE(m_engine->itemBag(id)->text("ITEMREADCOUNT"), QStringLiteral("2"));
    QCOMPARE(m_engine->itemBag(id)->text("ITEMUNREADCOUNT"), QStringLiteral("1"));
    // The main window's details show it.
    LocalSettings::SetBaseFolder(m_mail->path());
    {
        frmMainWindow window;
        window.SetClient(m_engine->client);
        window.DoDisplayRefresh();
        QVERIFY(window.SelectRowByID(id));
        QCOMPARE(window.findChild<QLabel *>("lblReadArticles")->text(), QStringLiteral("2"));
        QCOMPARE(window.findChild<QLabel *>("lblNewArticles")->text(), QStringLiteral("1"));
    }
    LocalSettings::SetBaseFolder(QString());

    // Marked unread again in the mail program.
    const QString seen = m_probe->files({"Seen"}).filter(":2,S").first();
    QVERIFY(QFile::rename(seen, seen.chopped(1)));
    QTRY_COMPARE(m_engine->itemBag(id)->text("ITEMREADCOUNT"), QStringLiteral("1"));

    // Read just before new articles land in the same folder: the folder's change is not taken
    // for the delivery's own (the regular look is an hour away here).
    startAgent({}, {}, 3600000);
    QVERIFY(m_probe->markSeen(m_probe->files({"Seen"}).filter(QRegularExpression("[^S]$")).first()));
    m_server.serve("/seen", feed("Seen", 1, 4));
    refetch(id);
    QTRY_COMPARE(m_probe->count({"Seen"}), 4);
    QTRY_COMPARE(m_engine->itemBag(id)->text("ITEMREADCOUNT"), QStringLiteral("2"));
}

void tst_MailDelivery::mailProgramMovesAndDeletesAreFollowed()
{
    startAgent();
    const qint32 moved = subscribe("/moved", "Moved", "", 2);
    const qint32 deleted = subscribe("/deleted", "Deleted", "", 2);
    bind(moved, 1);
    bind(deleted, 1);
    QTRY_COMPARE(m_probe->count({"Moved"}), 2);
    QTRY_COMPARE(m_probe->count({"Deleted"}), 2);

    // The user moves one folder and deletes the other in the mail program.
    QVERIFY(QDir().rename(m_probe->path({"Moved"}), m_probe->path({"Archive"})));
    QVERIFY(QDir(m_probe->path({"Deleted"})).removeRecursively());
    m_agent->replanFolders();

    // Moved: the new place becomes the subscription's own, and new articles go there.
    m_server.serve("/moved", feed("Moved", 1, 3));
    refetch(moved);
    QTRY_COMPARE(m_probe->count({"Archive"}), 3);
    QVERIFY(!m_probe->exists({"Moved"}));
    // Deleted: delivery stopped, as ConfigConsumer shows.
    QTRY_VERIFY(!m_engine->events->named("SubscriptionBindingChanged").isEmpty());
    const Handle bound = m_engine->client->ListConsumerItems("OLCONSUMER", "NEWS");
    QCOMPARE(m_engine->client->ListCount(bound), 1);
    m_engine->client->ReleaseHandle(bound);
    QVERIFY(!m_probe->exists({"Deleted"}));
}

void tst_MailDelivery::killedDeliveryLosesNothingAndCatchesUp()
{
    DaemonProcess daemon;
    QVERIFY2(daemon.start(), qPrintable(daemon.errorText()));
    SubscribeClientPtr client = daemon.newClient();
    const int feeds = 6, items = 250;
    QList<qint32> ids;
    for (int f = 0; f < feeds; ++f)
        ids.append(
            addBound(*client, QStringLiteral("/bulk%1").arg(f), QStringLiteral("Bulk %1").arg(f), items));
    // Every feed fetched before delivery starts, so there is plenty to cut into.
    for (const qint32 id : ids)
        QTRY_COMPARE_WITH_TIMEOUT(unreadCount(*client, id), items, 30000);

    const QString root = m_mail->filePath("Mail");
    const QStringList args = {"--socket", daemon.socketName(), "--maildir", root, "--batch", "20"};
    const QString program = DaemonProcess::executable("quillon-deliver");
    const auto delivered = [&] {
        int total = 0;
        for (int f = 0; f < feeds; ++f)
            total += m_probe->count({QStringLiteral("Bulk %1").arg(f)});
        return total;
    };
    for (int kills = 0, before = 0; kills < 10; ++kills, before = delivered()) {
        QProcess run;
        run.setProcessChannelMode(QProcess::ForwardedChannels);
        run.start(program, args);
        QTRY_VERIFY_WITH_TIMEOUT(delivered() >= before + 40, 30000);
        run.kill(); // SIGKILL mid-batch: no chance to tidy up
        QVERIFY(run.waitForFinished(10000));
    }
    QVERIFY(delivered() < feeds * items);

    // While it is away, a new subscription brings more.
    const qint32 late = addBound(*client, "/late", "Late", 5);
    QTRY_COMPARE_WITH_TIMEOUT(unreadCount(*client, late), 5, 30000);

    QProcess second;
    second.setProcessChannelMode(QProcess::ForwardedChannels);
    second.start(program, args + QStringList{"--once"});
    QVERIFY(second.waitForFinished(60000));
    QCOMPARE(second.exitCode(), 0);
    QCOMPARE(delivered(), feeds * items);
    QCOMPARE(m_probe->count({"Late"}), 5);
    for (int f = 0; f < feeds; ++f) {
        const QStringList folder = {QStringLiteral("Bulk %1").arg(f)};
        QCOMPARE(messageIds(*m_probe, folder).size(), m_probe->count(folder));
    }
    QVERIFY(QDir(root + "/.Bulk 0/tmp").isEmpty());
}

void tst_MailDelivery::imapAccountGetsTheSameDelivery()
{
    DovecotServer dovecot;
    QString why;
    if (!dovecot.start(&why))
        QSKIP(qPrintable(why));
    ImapSession::Account account;
    account.port = dovecot.port();
    account.user = dovecot.user();
    account.password = dovecot.password();
    startAgent(std::make_unique<ImapStore>(account));

    // What a mail client sees, over its own connection.
    auto client = std::make_unique<ImapSession>();
    QVERIFY2(client->open(account, &why), qPrintable(why));
    const auto count = [&client](const QByteArray &box) {
        const ImapSession::Answer status = client->command("STATUS " + box + " (MESSAGES)");
        return status.ok ? status.untagged.value(0).split(' ').last().chopped(1).toInt() : -1;
    };
    const qint32 id = subscribe("/imap", "Über IMAP", "Tech", 3);
    bind(id, 1);
    const QByteArray box = "\"Tech." + ImapSession::encodeName("Über IMAP") + "\"";
    QTRY_COMPARE(count(box), 3);
    QCOMPARE(ImapSession::decodeName(ImapSession::encodeName("Über & IMAP")), QStringLiteral("Über & IMAP"));
    // Delivered again after a restart: nothing doubles.
    startAgent(std::make_unique<ImapStore>(account));
    QCOMPARE(count(box), 3);

    // The client reads one: \Seen reaches the engine.
    QVERIFY(client->command("SELECT " + box).ok);
    QVERIFY(client->command("STORE 1 +FLAGS (\\Seen)").ok);
    QVERIFY(client->command("UNSELECT").ok);
    QTRY_COMPARE(m_engine->itemBag(id)->text("ITEMREADCOUNT"), QStringLiteral("1"));

    // Renamed in the mail program (tst_FolderRename has ConfigConsumer's renames): found by its
    // messages, and it becomes the folder.
    QVERIFY(client->command("RENAME " + box + " \"Tech.Kept\"").ok);
    m_agent->replanFolders();
    m_server.serve("/imap", feed("Über IMAP", 1, 4));
    refetch(id);
    QTRY_COMPARE(count("\"Tech.Kept\""), 4);

    // The server away for half a minute while articles wait: nothing is unbound, and they
    // arrive within a minute of its return.
    dovecot.stop();
    QElapsedTimer away;
    away.start();
    m_server.serve("/imap", feed("Über IMAP", 1, 6));
    refetch(id);
    m_agent->replanFolders();
    QTRY_VERIFY_WITH_TIMEOUT(away.hasExpired(30000), 40000);
    QCOMPARE(EngineCalls::ConsumerItems(*m_engine->client, "OLCONSUMER"), QList<int>{id});
    QVERIFY2(dovecot.start(&why), qPrintable(why));
    client = std::make_unique<ImapSession>();
    QVERIFY2(client->open(account, &why), qPrintable(why));
    QTRY_COMPARE_WITH_TIMEOUT(count("\"Tech.Kept\""), 6, 60000);

    // Unchecked with removal: they go.
    bind(id, 0);
    QTRY_COMPARE(count("\"Tech.Kept\""), 0);
}

// Names that differ only in separators stay apart through rename and delete, long names
// arrive, and a store that goes away for a while is waited for, not taken as deleted.
void tst_MailDelivery::oddNamesAndOutagesKeepDelivering()
{
    const QString root = m_mail->filePath("Mail");
    const auto recordedStore = [this, root] {
        auto store = std::make_unique<MaildirStore>(root);
        store->setRootsRecord(m_mail->filePath("state/maildir-roots"));
        return store;
    };
    startAgent(recordedStore());
    const QString cjk(120, QChar(0x65b0));
    const qint32 dotted = subscribe("/dotted", "Col.A", "", 2);
    const qint32 slashed = subscribe("/slashed", "Col/A", "", 3);
    const qint32 wide = subscribe("/wide", cjk, cjk, 2);
    for (const qint32 id : {dotted, slashed, wide})
        bind(id, 1);
    const QStringList slashedFolder = {FolderPlan::safeName("Col/A")};
    QTRY_COMPARE(m_probe->count({FolderPlan::safeName("Col.A")}), 2);
    QTRY_COMPARE(m_probe->count(slashedFolder), 3);
    QTRY_COMPARE(m_probe->count({FolderPlan::safeName(cjk), FolderPlan::safeName(cjk)}), 2);

    setSpecific(dotted, "FOLDERTITLE", "Col.B");
    m_agent->replanFolders();
    QCOMPARE(m_probe->count({FolderPlan::safeName("Col.B")}), 2);
    m_engine->setSetting("OLCONSUMER", "OutlookDefaults", "SubDeletedInConfig", "0");
    m_engine->client->RemoveItem("NEWS", dotted, 0);
    m_agent->replanFolders();
    QVERIFY(!m_probe->exists({FolderPlan::safeName("Col.B")}));
    QCOMPARE(m_probe->count(slashedFolder), 3);

    // The root goes away for half a minute (a disk unmounted), delivery restarting meanwhile,
    // while new articles wait: nothing is unbound, nothing made in its place, and they arrive
    // once it is back.
    QVERIFY(QDir().rename(root, root + ".away"));
    QElapsedTimer away;
    away.start();
    m_server.serve("/slashed", feed("Col/A", 1, 5));
    refetch(slashed);
    m_agent->replanFolders();
    startAgent(recordedStore());
    m_agent->replanFolders();
    QTRY_VERIFY_WITH_TIMEOUT(away.hasExpired(30000), 40000);
    QVERIFY(!QFileInfo::exists(root));
    QCOMPARE(EngineCalls::ConsumerItems(*m_engine->client, "OLCONSUMER"), (QList<int>{slashed, wide}));
    QVERIFY(QDir().rename(root + ".away", root));
    QTRY_COMPARE_WITH_TIMEOUT(m_probe->count(slashedFolder), 5, 30000);
}

// A folder that cannot be made (a file stands where it goes) fails the subscription where the
// window shows failures, until its articles can be stored.
void tst_MailDelivery::unstorableArticlesFailTheSubscriptionVisibly()
{
    startAgent();
    const QString blocker = m_probe->path({"Blocked"});
    QVERIFY(QDir().mkpath(QFileInfo(blocker).path()) && TestFiles::write(blocker, "not a folder"));
    const qint32 id = subscribe("/blocked", "Blocked", "", 2);
    bind(id, 1);
    const auto shown = [&] {
        HandleGuard item(*m_engine->client, m_engine->client->GetItemBag("NEWS", id, 0));
        return SubscriptionListLoader::FactsOf(*m_engine->client, item.get()).lastStatus;
    };
    QTRY_VERIFY(shown().startsWith("Error: the mail delivery cannot store its articles: "));
    QVERIFY(QFile::remove(blocker));
    QTRY_COMPARE_WITH_TIMEOUT(m_probe->count({"Blocked"}), 2, 20000);
    QTRY_VERIFY(shown().startsWith("OK"));
}

void tst_MailDelivery::newStoreTakesTheMailAlong()
{
    const QString old = m_mail->filePath("Mail");
    startAgent({}, StoreLocation::relocator(m_engine->client, old, old));
    const qint32 id = subscribe("/moving", "Moving", "", 2);
    bind(id, 1);
    QTRY_COMPARE(m_probe->count({"Moving"}), 2);
    m_agent->replanFolders();
    QVERIFY(QFileInfo::exists(old)); // nothing asked for: the store stays

    // What first run or the defaults page writes when the user wants a new store with the
    // existing mail moved; delivery takes it up while it runs.
    const QString stores = m_mail->filePath("stores");
    for (const auto &[key, value] :
         {std::pair{"MakeNewPST_fileName", QString("Corvell.pst")}, std::pair{"MakeNewPST_path", stores},
          std::pair{"MakeNewPST_mode", QString("1")}})
        m_engine->setSetting("OLCONSUMER", "OutlookDefaults", key, value);
    QVERIFY(
        MailStoreOutlook(QString()).CreatePersonalFolders(stores + "/Corvell.pst", "Corvell for Outlook"));
    const QString root = stores + "/Corvell";
    // Taken up between batches, at the first replan that finds none under way.
    QTRY_VERIFY((m_agent->replanFolders(), m_agent->store().describe() == root));
    QVERIFY(!QFileInfo::exists(old));
    MaildirProbe moved(root);
    QCOMPARE(moved.count({"Moving"}), 2);

    // New articles go to the new store, and the folder index came along: a rename still moves.
    m_server.serve("/moving", feed("Moving", 1, 3));
    refetch(id);
    QTRY_COMPARE(moved.count({"Moving"}), 3);
    setSpecific(id, "FOLDERTITLE", "Renamed");
    m_agent->replanFolders();
    QTRY_COMPARE(moved.count({"Renamed"}), 3);
    // Made once; from then on the store is there, for ConfigConsumer's pickers too.
    QCOMPARE(StoreLocation::resolve(*m_engine->client, old), root);
    QCOMPARE(MailStoreOutlook::defaultRoot(m_engine->client.get()), root);
}

QTEST_MAIN(tst_MailDelivery)
#include "tst_MailDelivery.moc"
