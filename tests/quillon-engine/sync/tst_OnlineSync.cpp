#include "DaemonProcess.h"
#include "DeliveryAgent.h"
#include "EngineFixture.h"
#include "LocalHttpServer.h"
#include "MaildirStore.h"
#include "TinyRssServer.h"

#include <QDirIterator>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

using namespace quillon;

namespace {
QByteArray rss(const QString &name)
{
    const QString item = "<item><guid>%1</guid><title>%1</title><link>http://example.com/%1</link>"
                         "<description>Body</description></item>";
    return ("<?xml version=\"1.0\"?><rss version=\"2.0\"><channel><title>Feed " + name +
            "</title><link>http://example.com/</link><description>d</description>" + item.arg(name + "1") +
            item.arg(name + "2") + "</channel></rss>")
        .toUtf8();
}

// The file of an article's message in a Maildir tree, "" when there is none.
QString message(const QTemporaryDir &mail, const QString &articleId)
{
    QDirIterator it(mail.path(), {"a" + articleId + ".quillon*"}, QDir::Files | QDir::Hidden,
                    QDirIterator::Subdirectories);
    return it.hasNext() ? it.next() : QString();
}
} // namespace

// Synchronisation against a real Tiny Tiny RSS, whose feeds come from kFeedHost.
class tst_OnlineSync : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void syncsSubscriptionsAndReadStateBothWays();
    void sendsAfterRestartWhatAKilledEngineQueued();
    void tellsWhyARunFailed_data();
    void tellsWhyARunFailed();

private:
    // Runs SyncNow and answers the outcome once the run has ended.
    static QString sync(SubscribeClient &client);
    // One value of the engine's database, read beside it.
    static QString local(const QString &database, const QString &statement);
    static QString local(EngineFixture &f, const QString &statement)
    {
        return local(f.engine.core().databasePath(), statement);
    }
    QString feed(const QString &name) const { return m_feeds.url("/" + name + ".xml").toString(); }
    QString serverFeeds() { return m_server.sql("select feed_url from ttrss_feeds order by feed_url"); }

    LocalHttpServer m_feeds;
    TinyRssServer m_server;
};

void tst_OnlineSync::initTestCase()
{
    if (const QString missing = TinyRssServer::missing(); !missing.isEmpty())
        QSKIP(qPrintable(missing));
    QVERIFY(m_feeds.listen(QHostAddress(TinyRssServer::kFeedHost), 80));
    for (const QString &name : QStringList{"a", "b", "c", "d"})
        m_feeds.serve("/" + name + ".xml", rss(name));
    QVERIFY2(m_server.start(), qPrintable(m_server.errorText()));
}

QString tst_OnlineSync::sync(SubscribeClient &client)
{
    const auto value = [&client](const QString &name) {
        const Handle bag = client.GetSyncSettings();
        const QString text = client.GetStringValue(bag, name);
        client.ReleaseHandle(bag);
        return text;
    };
    const QString before = value("SyncTime");
    client.SyncNow();
    return QTest::qWaitFor([&] { return value("SyncTime") != before; }, 30000) ? value("SyncStatus")
                                                                               : "(no end)";
}

QString tst_OnlineSync::local(const QString &database, const QString &statement)
{
    QString value;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "beside");
        db.setDatabaseName(database);
        QSqlQuery query(db);
        if (db.open() && query.exec(statement) && query.next())
            value = query.value(0).toString();
    }
    QSqlDatabase::removeDatabase("beside");
    return value;
}

void tst_OnlineSync::syncsSubscriptionsAndReadStateBothWays()
{
    EngineFixture f;
    f.engine.core().startUpdating();
    f.client->SetSyncSettings(1, m_server.address(), TinyRssServer::kUser, TinyRssServer::kPassword, 900);
    m_server.sql("insert into ttrss_feed_categories (owner_uid, title) values (1, 'Tech')");
    m_server.sql("insert into ttrss_feeds (owner_uid, title, feed_url, cat_id) select 1, 'B', '" + feed("b") +
                 "', id from ttrss_feed_categories where title = 'Tech'");
    f.add(feed("a"));

    // Added on either side: on both after a run, the server's in its category, the tree told.
    QCOMPARE(sync(*f.client), "synchronised");
    QCOMPARE(serverFeeds(), feed("a") + "\n" + feed("b"));
    QCOMPARE(local(f, "select category from subscriptions where url = '" + feed("b") + "'"), "Tech");
    QTRY_VERIFY(std::any_of(f.events->received.cbegin(), f.events->received.cend(), [&](const BagPtr &m) {
        return m->text("MESSAGE") == "SubscriptionAdded" && m->bag("Result")->text("URL") == feed("b");
    }));

    // Read in the mail program and read on the server, each taken by the other side.
    QVERIFY2(m_server.update(), qPrintable(m_server.errorText()));
    QTRY_COMPARE_WITH_TIMEOUT(local(f, "select count(*) from articles"), "4", 20000);
    const auto idOf = [&](const QString &name) {
        return local(f, "select id from articles where link = 'http://example.com/" + name + "'");
    };
    QTemporaryDir mail;
    DeliveryAgent::Options options;
    options.readPollMs = 50;
    DeliveryAgent agent(f.engine.newClient(), std::make_unique<MaildirStore>(mail.path()),
                        mail.filePath("index.json"), options);
    QVERIFY(agent.start(nullptr));
    for (const QString &url : {feed("a"), feed("b")})
        f.client->BindItem("OLCONSUMER", "NEWS",
                           local(f, "select id from subscriptions where url = '" + url + "'").toInt(), 1);
    QTRY_VERIFY(!message(mail, idOf("b1")).isEmpty());
    const QString a1 = message(mail, idOf("a1"));
    QVERIFY(QFile::rename(a1, QString(a1).replace("/new/", "/cur/") + ":2,S"));
    QTRY_COMPARE(local(f, "select is_read from articles where id = " + idOf("a1")), "1");
    m_server.sql("update ttrss_user_entries set unread = false where ref_id in "
                 "(select id from ttrss_entries where link = 'http://example.com/b1')");
    f.events->received.clear();
    QCOMPARE(sync(*f.client), "synchronised");
    QTRY_VERIFY(message(mail, idOf("b1")).endsWith(":2,S"));
    const QString b = local(f, "select subscription_id from articles where id = " + idOf("b1"));
    QTRY_VERIFY(std::ranges::any_of(f.events->named("SubscriptionChanged"), [&](const BagPtr &m) {
        return m->bag("Result")->text("SUBSCRIPTIONID") == b; // the tree's counts follow
    }));
    QCOMPARE(m_server.sql("select e.link from ttrss_user_entries u join ttrss_entries e on e.id = u.ref_id "
                          "where not u.unread order by e.link"),
             "http://example.com/a1\nhttp://example.com/b1");
    QCOMPARE(
        local(f,
              "select group_concat(link) from (select link from articles where is_read = 1 order by link)"),
        "http://example.com/a1,http://example.com/b1");

    // Removed on either side: gone from both.
    f.client->RemoveItem("NEWS",
                         local(f, "select id from subscriptions where url = '" + feed("b") + "'").toInt(), 0);
    m_server.sql("delete from ttrss_feeds where feed_url = '" + feed("a") + "'");
    QCOMPARE(sync(*f.client), "synchronised");
    QCOMPARE(serverFeeds(), "");
    QCOMPARE(local(f, "select count(*) from subscriptions"), "0");

    // Made while the server is away: sent when it is back.
    m_server.stopWeb();
    f.add(feed("c"));
    QVERIFY(sync(*f.client).startsWith("cannot reach the server"));
    QVERIFY2(m_server.startWeb(), qPrintable(m_server.errorText()));
    QCOMPARE(sync(*f.client), "synchronised");
    QCOMPARE(serverFeeds(), feed("c"));
}

void tst_OnlineSync::sendsAfterRestartWhatAKilledEngineQueued()
{
    m_server.sql("insert into ttrss_feeds (owner_uid, title, feed_url) select 1, 'C', '" + feed("c") +
                 "' where not exists (select 1 from ttrss_feeds where feed_url = '" + feed("c") + "')");
    QVERIFY2(m_server.update(), qPrintable(m_server.errorText()));
    DaemonProcess daemon;
    QVERIFY2(daemon.start(), qPrintable(daemon.errorText()));
    SubscribeClientPtr client = daemon.newClient();
    client->SetSyncSettings(1, m_server.address(), TinyRssServer::kUser, TinyRssServer::kPassword, 900);
    client->Connect("CONFIGCONSUMER", std::make_shared<CopyingCallback>(*client));
    QCOMPARE(sync(*client), "synchronised"); // takes the server's c, which is then fetched
    const QString database = QDir(daemon.dataDir()).filePath("engine.sqlite");
    const QString c1 = "select id from articles where link = 'http://example.com/c1'";
    QTRY_VERIFY_WITH_TIMEOUT(!local(database, c1).isEmpty(), 20000);

    // A read mark and a subscription, each answered, then SIGKILL: no chance to send anything.
    QVERIFY(EngineCalls::AddSubscription(*client, "D", feed("d")) > 0);
    auto answer = std::make_shared<CopyingCallback>(*client);
    const Handle request = client->NewBag();
    for (const auto &[name, value] : {std::pair{"REQUEST", "SETREADSTATE"}, {"READ", "1"}})
        client->SetStringValue(request, name, value);
    client->SetStringValue(request, "ARTICLEIDS", local(database, c1));
    client->SubmitRequest(request, answer);
    client->ReleaseHandle(request);
    QTRY_VERIFY(!answer->received.isEmpty());
    daemon.process().kill();
    QVERIFY(daemon.process().waitForFinished());
    client.reset();

    QVERIFY2(daemon.start(), qPrintable(daemon.errorText()));
    client = daemon.newClient();
    QCOMPARE(sync(*client), "synchronised");
    QVERIFY(serverFeeds().contains(feed("d")));
    QCOMPARE(m_server.sql("select u.unread from ttrss_user_entries u join ttrss_entries e on e.id = u.ref_id "
                          "where e.link = 'http://example.com/c1'"),
             "f");
}

void tst_OnlineSync::tellsWhyARunFailed_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("password");
    QTest::addColumn<bool>("apiOff");
    QTest::addColumn<QString>("outcome");
    QTest::newRow("wrong password") << ""
                                    << "wrong" << false << "wrong user name or password (LOGIN_ERROR)";
    QTest::newRow("API off") << "" << TinyRssServer::kPassword << true
                             << "the server's API is switched off (API_DISABLED)";
    QTest::newRow("no API") << "page" << TinyRssServer::kPassword << false
                            << "no sync API found at this address";
    QTest::newRow("nobody there") << "http://127.0.0.1:1/" << TinyRssServer::kPassword << false
                                  << "cannot reach the server (Connection refused)";
}

void tst_OnlineSync::tellsWhyARunFailed()
{
    QFETCH(QString, address);
    QFETCH(QString, password);
    QFETCH(bool, apiOff);
    QFETCH(QString, outcome);
    LocalHttpServer page;
    QVERIFY(page.listen());
    page.serve("/", "<html><body>A web page</body></html>", "text/html");
    EngineFixture f;
    const QString typed = address.isEmpty()   ? m_server.address()
                          : address == "page" ? page.url("/").toString()
                                              : address;
    f.client->SetSyncSettings(1, typed, TinyRssServer::kUser, password, 900);
    const QString api = "update ttrss_user_prefs set value = '%1' where pref_name = 'ENABLE_API_ACCESS'";
    m_server.sql(api.arg(apiOff ? "false" : "true"));
    QCOMPARE(sync(*f.client), outcome);
    m_server.sql(api.arg("true"));
}

int main(int argc, char **argv)
{
    TinyRssServer::enterPrivateNetwork(argv);
    QCoreApplication app(argc, argv);
    tst_OnlineSync test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_OnlineSync.moc"
