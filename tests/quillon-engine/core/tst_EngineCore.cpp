#include "CopyingCallback.h"
#include "EngineCalls.h"
#include "EngineCore.h"
#include "InProcessLink.h"
#include "LinkedSubscribeClient.h"
#include "SideConnection.h"
#include "SubscriptionFields.h"
#include "TestEngine.h"
#include "TestFiles.h"
#include "TestRows.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QTest>

using namespace quillon;
using namespace EngineCalls;

namespace {
// Adds a subscription titled after its address, bound to the consumers named.
qint32 add(SubscribeClient &c, const QString &url, const QStringList &consumerIds = {})
{
    return AddSubscription(c, "Title of " + url, url, {}, consumerIds);
}

// The SUBSCRIPTIONIDS of a message's Result.
QList<qint32> idsOf(const BagPtr &message)
{
    QList<qint32> ids;
    const ListPtr list = message->bag("Result")->list("SUBSCRIPTIONIDS");
    for (qsizetype i = 0; list && i < list->size(); ++i)
        ids.append(valueLong(list->at(i)));
    return ids;
}
} // namespace

class tst_EngineCore : public QObject
{
    Q_OBJECT

private:
    SubscribeClientPtr client(const QString &consumerId = {},
                              std::shared_ptr<CopyingCallback> *events = nullptr);

    std::unique_ptr<TestEngine> m_engine;
    QList<SubscribeClientPtr> m_clients;

private Q_SLOTS:
    void init();
    void cleanup();
    void addAnswersTheCallerAndTellsTheOthers();
    void itemBagsLeaveUnknownValuesOutAndUpdatesKeepEveryName();
    void bindingFollowsTheDeliveryRuleAndRemovalTakesEverything();
    void badRequestsAndCallsSayWhy();
    void reopenedStoreKeepsEverything();
    void connectionsAndTermination();
    void storedDatesAreUtcToTheSecond_data();
    void storedDatesAreUtcToTheSecond();
};

SubscribeClientPtr tst_EngineCore::client(const QString &consumerId, std::shared_ptr<CopyingCallback> *events)
{
    auto c = m_engine->newClient();
    m_clients.append(c);
    if (!consumerId.isEmpty()) {
        auto callback = std::make_shared<CopyingCallback>(*c);
        c->Connect(consumerId, callback);
        if (events)
            *events = callback;
    }
    return c;
}

void tst_EngineCore::init()
{
    m_engine = std::make_unique<TestEngine>();
    QVERIFY(m_engine->isReady());
}

void tst_EngineCore::cleanup()
{
    for (const auto &c : std::as_const(m_clients))
        QCOMPARE(c->LiveHandleCount(), 0);
    m_clients.clear();
    m_engine.reset();
}

void tst_EngineCore::addAnswersTheCallerAndTellsTheOthers()
{
    std::shared_ptr<CopyingCallback> configEvents, outlookEvents;
    auto config = client("CONFIGCONSUMER", &configEvents);
    client("OLCONSUMER", &outlookEvents);

    const Handle request = config->CreateItemRequest(kNews, "Daily", "http://a/feed");
    config->SetStringValue(request, "CATEGORY", "Tech~~~News");
    config->SetStringValue(request, "USER", "ann");
    config->SetStringValue(request, "PASSWORD", "secret");
    const Handle consumers = config->NewList();
    config->ListAppend(consumers, "OLCONSUMER");
    config->SetHandleValue(request, "ConsumerIDs", consumers);
    auto answer = std::make_shared<CopyingCallback>(*config);
    const qint32 first = config->SubmitRequest(request, answer);
    const qint32 second = config->SubmitRequest(request, std::make_shared<CopyingCallback>(*config));
    config->ReleaseHandle(consumers);
    config->ReleaseHandle(request);
    QVERIFY(first > 0);
    QVERIFY(second > first);

    // The answer comes from the event loop, never inside the call.
    QCOMPARE(answer->received.size(), 0);
    QTRY_COMPARE(answer->received.size(), 1);
    const BagPtr added = answer->received.first();
    const qint32 id = added->bag("Result")->number("SUBSCRIPTIONID");
    QVERIFY(id > 0);
    QCOMPARE(added->text("MESSAGE"), "SubscriptionAddResult");
    QCOMPARE(Texts(added->bag("Result"), {"URL", "TITLE", "CATEGORY"}),
             QStringList({"http://a/feed", "Daily", "Tech~~~News"}));

    // Two adds: the other consumer hears of both, then of each binding; the asker of neither add.
    QTRY_COMPARE(outlookEvents->received.size(), 4);
    QCOMPARE(outlookEvents->received.at(0)->text("MESSAGE"), "SubscriptionAdded");
    QCOMPARE(outlookEvents->received.at(0)->bag("Result")->text("SUBSCRIPTIONID").toInt(), id);
    QCOMPARE(outlookEvents->received.at(1)->text("MESSAGE"), "SubscriptionBindingChanged");
    QCOMPARE(outlookEvents->received.at(1)->bag("Result")->text("ORIGINATOR"), "CONFIGCONSUMER");
    QCOMPARE(idsOf(outlookEvents->received.at(1)), QList<qint32>{id});
    QTRY_COMPARE(configEvents->received.size(), 2);
    for (const auto &event : configEvents->received)
        QCOMPARE(event->text("MESSAGE"), "SubscriptionBindingChanged");

    QCOMPARE(ItemTexts(*config, id, {"USER", "PASSWORD", "UPDATEFREQ", "DELETEUNREAD"}),
             QStringList({"ann", "secret", "-1", "-1"}));
    QCOMPARE(ConsumerItems(*config, "OLCONSUMER"), (QList<int>{id, id + 1}));
    QCOMPARE(ConsumerItems(*config, "*"), (QList<int>{id, id + 1}));
    QCOMPARE(ConsumerItems(*config, "MEDIACONSUMER"), QList<int>{});
}

void tst_EngineCore::itemBagsLeaveUnknownValuesOutAndUpdatesKeepEveryName()
{
    auto c = client();
    const qint32 id = add(*c, "http://b/rss");
    QVERIFY(id > 0);

    // A feed added without a category sits at the top of the tree, not under "-237237".
    const QString m = kMissingText;
    QCOMPARE(ItemTexts(*c, id,
                       {"SUBSCRIPTIONID", "USER", "LASTUPDATESTATUS", "LastDateCheck", "NEXTUPDATETIME",
                        "FOLDERTITLE", "CATEGORY", "ITEMREADCOUNT", "ITEMUNREADCOUNT"}),
             QStringList({QString::number(id), m, m, m, m, m, QString(), "0", "0"}));

    SetSetting(*c, "OLCONSUMER", QStringLiteral("SubscriptionSpecifics_%1").arg(id), "FOLDERTITLE",
               "My folder");
    QCOMPARE(ItemText(*c, id, "FOLDERTITLE"), "My folder");

    SideConnection side(m_engine->core().databasePath());
    QVERIFY(
        side.exec(QStringLiteral("INSERT INTO articles (subscription_id, guid, is_read) VALUES (%1, 'a', 1),"
                                 " (%1, 'b', 0), (%1, 'c', 0)")
                      .arg(id)));
    QCOMPARE(ItemTexts(*c, id, {"ITEMREADCOUNT", "ITEMUNREADCOUNT"}), QStringList({"1", "2"}));

    QVERIFY_THROWS_EXCEPTION(EngineError, c->GetItemBag(kNews, id + 100, 0));

    // An update keeps every name it is given, whatever its case or type, and makes the item due.
    const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-1);
    const Handle values = c->NewBag();
    c->SetLongValue(values, "UPDATEFREQ", 7200);
    c->SetStringValue(values, "DELETEREAD", "86400");
    c->SetStringValue(values, "LastDateCheck", "2024-05-01T14:00:00+02:00");
    c->SetStringValue(values, "SearchLimit", "25");
    c->SetLongValue(values, "SUBSCRIPTIONID", 999);
    c->UpdateItem(kNews, id, values);
    c->ReleaseHandle(values);

    QCOMPARE(
        ItemTexts(*c, id, {"UPDATEFREQ", "DELETEREAD", "LastDateCheck", "searchlimit", "SUBSCRIPTIONID"}),
        QStringList({"7200", "86400", "2024-05-01T12:00:00Z", "25", QString::number(id)}));
    const QDateTime due = QDateTime::fromString(ItemText(*c, id, "NEXTUPDATETIME"), Qt::ISODate);
    QVERIFY(due >= before && due <= QDateTime::currentDateTimeUtc().addSecs(1));

    // A bad value undoes the whole update, names applied before it included.
    const Handle bad = c->NewBag();
    c->SetStringValue(bad, "TITLE", "Changed");
    c->SetStringValue(bad, "UPDATEFREQ", "soon");
    QVERIFY_THROWS_EXCEPTION(EngineError, c->UpdateItem(kNews, id, bad));
    QVERIFY_THROWS_EXCEPTION(EngineError, c->UpdateItem(kNews, id + 100, bad));
    c->ReleaseHandle(bad);
    QCOMPARE(ItemTexts(*c, id, {"TITLE", "UPDATEFREQ"}), QStringList({"Title of http://b/rss", "7200"}));

    // A login inside an address leaves it for USER and PASSWORD; one given beside it wins.
    const qint32 secret = add(*c, "https://ann:s3cret@e/feed");
    QCOMPARE(ItemTexts(*c, secret, {"URL", "USER", "PASSWORD"}),
             QStringList({"https://e/feed", "ann", "s3cret"}));
    const Handle moved = c->NewBag();
    c->SetStringValue(moved, "URL", "http://bob:pw@e/other");
    c->SetStringValue(moved, "USER", "carol");
    c->UpdateItem(kNews, secret, moved);
    c->ReleaseHandle(moved);
    QCOMPARE(ItemTexts(*c, secret, {"URL", "USER"}), QStringList({"http://e/other", "carol"}));
}

void tst_EngineCore::bindingFollowsTheDeliveryRuleAndRemovalTakesEverything()
{
    std::shared_ptr<CopyingCallback> events;
    auto config = client("CONFIGCONSUMER", &events);
    auto outlook = client("OLCONSUMER");
    const QString ol = "OLCONSUMER";
    const qint32 id = add(*config, "http://d/feed", {ol});
    QTRY_COMPARE(events->received.size(), 1); // the add's own binding
    const auto bound = [&] { return ConsumerItems(*config, ol).contains(id); };

    config->BindItem(ol, kNews, id, 1); // the add's confirmation
    QVERIFY(bound());
    config->BindItem(ol, kNews, id, 1);
    QVERIFY(!bound());
    outlook->BindItem(ol, kNews, id, 1);
    QVERIFY(bound());
    config->BindItem(ol, kNews, id, 0);
    QVERIFY(!bound());
    config->BindItem(ol, kNews, id, 0); // nothing left to change
    config->BindItem(ol, kNews, id, 1);
    QVERIFY(bound());

    // Silent calls send nothing: four announced changes follow the add's binding.
    QTRY_COMPARE(events->received.size(), 5);
    QStringList seen;
    for (const auto &event : events->received.mid(1)) {
        seen << Texts(event->bag("Result"), {"SubscriptionBindFlag", "ORIGINATOR", "CONSUMERID"}).join(u' ');
        QCOMPARE(idsOf(event), QList<qint32>{id});
    }
    QCOMPARE(seen, QStringList({"FALSE CONFIGCONSUMER OLCONSUMER", "TRUE OLCONSUMER OLCONSUMER",
                                "FALSE CONFIGCONSUMER OLCONSUMER", "TRUE CONFIGCONSUMER OLCONSUMER"}));

    QVERIFY_THROWS_EXCEPTION(EngineError, config->BindItem(ol, kNews, id, 2));
    QVERIFY_THROWS_EXCEPTION(EngineError, config->BindItem(ol, kNews, id + 100, 1));

    // A removed subscription takes its bindings, settings and articles with it.
    const auto &c = config;
    const qint32 kept = add(*c, "http://g/feed");
    const QString section = QStringLiteral("SubscriptionSpecifics_%1").arg(id);
    const QString keptSection = QStringLiteral("SubscriptionSpecifics_%1").arg(kept);
    SetSetting(*c, "OLCONSUMER", section, "FOLDERTITLE", "F");
    SetSetting(*c, "MEDIACONSUMER", section, "EnableAutoDownload", "1");
    SetSetting(*c, "OLCONSUMER", keptSection, "FOLDERTITLE", "G");
    SideConnection side(m_engine->core().databasePath());
    QVERIFY(
        side.exec(QStringLiteral("INSERT INTO articles (subscription_id, guid) VALUES (%1, 'x')").arg(id)));

    c->RemoveItem(kNews, id, 1);
    QVERIFY_THROWS_EXCEPTION(EngineError, c->GetItemBag(kNews, id, 0));
    QCOMPARE(ConsumerItems(*c, "*"), QList<int>{kept});
    QCOMPARE(ConsumerItems(*c, "OLCONSUMER"), QList<int>{});
    QCOMPARE(QStringList({Setting(*c, "OLCONSUMER", section, "FOLDERTITLE"),
                          Setting(*c, "MEDIACONSUMER", section, "EnableAutoDownload"),
                          Setting(*c, "OLCONSUMER", keptSection, "FOLDERTITLE")}),
             QStringList({kMissingText, kMissingText, "G"}));
    QCOMPARE(side.number("SELECT COUNT(*) FROM articles"), 0);

    c->RemoveItem(kNews, id, 1); // already gone: harmless
    // IDs are never handed out twice, so old per-subscription settings cannot be inherited.
    QVERIFY(add(*c, "http://h/feed") > kept);
}

void tst_EngineCore::badRequestsAndCallsSayWhy()
{
    auto c = client("CONFIGCONSUMER");
    const auto submit = [&](const QString &kind, const QString &url) {
        const Handle request = c->CreateItemRequest(kNews, "t", url);
        if (kind.isEmpty())
            c->SetStringValue(request, "REQUEST", QString());
        else
            c->SetStringValue(request, "REQUEST", kind);
        auto answer = std::make_shared<CopyingCallback>(*c);
        c->SubmitRequest(request, answer);
        c->ReleaseHandle(request);
        return answer;
    };
    const auto unknown = submit("FROB", "http://x");
    const auto noKind = submit(QString(), "http://x");
    const auto noUrl = submit("ADD", QString());
    auto preview = std::make_shared<CopyingCallback>(*c);
    QVERIFY(!c->RequestPreview(kNews, "gopher://x", preview).isEmpty());

    for (const auto &answer : {unknown, noKind, noUrl, preview}) {
        QTRY_COMPARE(answer->received.size(), 1);
        QCOMPARE(answer->received.first()->text("MESSAGE"), "RequestFailed");
        QVERIFY(!answer->received.first()->text("ERROR").isEmpty());
    }
    QVERIFY(unknown->received.first()->text("ERROR").contains("FROB"));
    QVERIFY(preview->received.first()->text("ERROR").contains("gopher://x"));
    QCOMPARE(ConsumerItems(*c, "*"), QList<int>{});

    EngineCore &core = m_engine->core();
    const auto session = core.openSession({});
    const auto message = [&](const QString &op, const QList<PropertyValue> &args) {
        try {
            core.call(session, op, args);
        } catch (const EngineError &e) {
            return e.message();
        }
        return QString();
    };
    QVERIFY(message("Frobnicate", {}).startsWith("Unknown engine operation"));
    QVERIFY(message("GetItemBag", {kNews, "1", 0}).startsWith("bad arguments for GetItemBag"));
    QVERIFY(message("GetItemBag", {kNews, 1}).startsWith("bad arguments for GetItemBag"));
    QVERIFY(message("SetSettings", {"X", QString(), qint32(1)}).startsWith("bad arguments for SetSettings"));
    QVERIFY(message("ListConsumerItems", {"*", "MAIL"}).contains("MAIL"));
    QVERIFY(message("Connect", {QString(), 1}).contains("consumer"));
    core.closeSession(session);
    QVERIFY(message("SyncNow", {}).contains("not open"));

    // A data folder that cannot be made: open() says why, and calls fail instead of crashing.
    QTemporaryFile blocker;
    QVERIFY(blocker.open());
    EngineCore broken(blocker.fileName() + "/data");
    QString why;
    QVERIFY(!broken.open(&why));
    QVERIFY(why.contains("data folder"));
    QVERIFY_THROWS_EXCEPTION(EngineError, broken.call(broken.openSession({}), "SyncNow", {}));
}

void tst_EngineCore::reopenedStoreKeepsEverything()
{
    QTemporaryDir dir;
    const QString folder = dir.filePath("nested/data");
    qint32 id = 0;
    {
        EngineCore core(folder);
        QVERIFY(core.open());
        auto c = LinkedSubscribeClient::create(std::make_unique<InProcessLink>(&core));
        c->Connect("CONFIGCONSUMER", std::make_shared<CopyingCallback>(*c));
        id = add(*c, "http://kept/feed", {"OLCONSUMER"});
        QVERIFY(id > 0);
        SetSetting(*c, "ENGINE", QString(), "GUID", "42");
        c->SetSyncSettings(1, "https://sync", "ann", "pw", 7200);
        c->Log("UI Client <> Engine comms established\r\n", 999);
        QCOMPARE(c->LiveHandleCount(), 0);
    }
    {
        // An address with a login in it, as older versions stored them.
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "older");
        db.setDatabaseName(QDir(folder).filePath("engine.sqlite"));
        QVERIFY(db.open());
        QVERIFY(QSqlQuery(db).exec("UPDATE subscriptions SET url = 'http://ann:pw@kept/feed'"));
        db.close();
    }
    QSqlDatabase::removeDatabase("older");
    EngineCore core(folder);
    QVERIFY(core.open());
    auto c = LinkedSubscribeClient::create(std::make_unique<InProcessLink>(&core));
    QCOMPARE(ItemTexts(*c, id, {"URL", "USER", "PASSWORD"}), QStringList({"http://kept/feed", "ann", "pw"}));
    QCOMPARE(ConsumerItems(*c, "OLCONSUMER"), QList<int>{id});
    QCOMPARE(Setting(*c, "ENGINE", QString(), "GUID"), "42");
    const Handle sync = c->GetSyncSettings();
    QCOMPARE(Texts(CopyingCallback::copyBag(*c, sync), {"SyncRemote", "SyncServer", "SyncFrequency"}),
             QStringList({"1", "https://sync", "7200"}));
    c->ReleaseHandle(sync);
    QCOMPARE(c->LiveHandleCount(), 0);

    const QList<QByteArray> lines = TestFiles::read(QDir(folder).filePath("engine.log")).split('\n');
    QCOMPARE(lines.size(), 2); // one line and the final line end
    QVERIFY(lines.first().endsWith("\t999\tCONFIGCONSUMER\tUI Client <> Engine comms established"));
}

void tst_EngineCore::connectionsAndTermination()
{
    std::shared_ptr<CopyingCallback> old, replaced, media;
    auto config = client("CONFIGCONSUMER", &old);
    config->Connect("CONFIGCONSUMER", replaced = std::make_shared<CopyingCallback>(*config));
    client("MEDIACONSUMER", &media);
    client(); // never connected: hears nothing
    QCOMPARE(m_engine->core().connectedConsumers(), (QStringList{"CONFIGCONSUMER", "MEDIACONSUMER"}));

    m_engine->core().announceTermination();
    QTRY_COMPARE(replaced->received.size(), 1);
    QTRY_COMPARE(media->received.size(), 1);
    QCOMPARE(replaced->received.first()->text("MESSAGE"), "EngineTerminated");
    QCOMPARE(old->received.size(), 0);

    m_clients.removeLast();
    QCOMPARE(m_engine->core().connectedConsumers().size(), 2);
    m_clients.removeLast();
    QCOMPARE(m_engine->core().connectedConsumers(), QStringList{"CONFIGCONSUMER"});
}

void tst_EngineCore::storedDatesAreUtcToTheSecond_data()
{
    QTest::addColumn<QDateTime>("time");
    QTest::addColumn<QString>("stored");

    const auto utc = [](const char *iso) {
        return QDateTime::fromString(QLatin1String(iso), Qt::ISODateWithMs);
    };
    row("epoch", utc("1970-01-01T00:00:00Z"), QStringLiteral("1970-01-01T00:00:00Z"));
    row("before 1970, fraction cut", utc("1969-12-31T23:59:59.500Z"), QStringLiteral("1969-12-31T23:59:59Z"));
    row("leap day", utc("2024-02-29T12:34:56.999Z"), QStringLiteral("2024-02-29T12:34:56Z"));
    row("century leap day", utc("2000-02-29T00:00:00Z"), QStringLiteral("2000-02-29T00:00:00Z"));
    row("1 March of a century", utc("1900-03-01T08:00:00Z"), QStringLiteral("1900-03-01T08:00:00Z"));
    row("year 1", utc("0001-01-01T00:00:00Z"), QStringLiteral("0001-01-01T00:00:00Z"));
    row("year 9999", utc("9999-12-31T23:59:59Z"), QStringLiteral("9999-12-31T23:59:59Z"));
    row("offset", utc("2023-11-14T23:30:00+02:00"), QStringLiteral("2023-11-14T21:30:00Z"));
    row("past year 9999", utc("9999-12-31T23:00:00-02:00"), QString());
    row("no date", QDateTime(), QString());
}

// Dates are written by hand for speed: they must read as Qt would write them.
void tst_EngineCore::storedDatesAreUtcToTheSecond()
{
    QFETCH(QDateTime, time);
    QFETCH(QString, stored);
    QCOMPARE(SubscriptionFields::isoDate(time), stored);
}

QTEST_GUILESS_MAIN(tst_EngineCore)
#include "tst_EngineCore.moc"
