#include "CopyingCallback.h"
#include "EngineCore.h"
#include "EngineCoreCalls.h"
#include "InProcessLink.h"
#include "LinkedSubscribeClient.h"
#include "TestEngine.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QTest>

using namespace quillon;
using namespace EngineCoreCalls;

namespace {
// The SUBSCRIPTIONIDS of a message's Result.
QList<qint32> idsOf(const BagPtr &message)
{
    QList<qint32> ids;
    const ListPtr list = message->bag("Result")->list(QStringLiteral("SUBSCRIPTIONIDS"));
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
    void itemBagLeavesUnknownValuesOut();
    void updateItemKeepsEveryNameAndMakesItDue();
    void bindItemFollowsTheDeliveryRule();
    void bindItemKeepsOrDropsDeliveredArticles();
    void removeItemTakesEverythingWithIt();
    void requestsThatCannotBeServedAreAnswered();
    void badCallsRaiseReadableErrors();
    void reopenedStoreKeepsEverything();
    void connectionsAndTermination();
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
    auto config = client(QStringLiteral("CONFIGCONSUMER"), &configEvents);
    client(QStringLiteral("OLCONSUMER"), &outlookEvents);

    const Handle request =
        config->CreateItemRequest(kNews, QStringLiteral("Daily"), QStringLiteral("http://a/feed"));
    config->SetStringValue(request, QStringLiteral("USER"), QStringLiteral("ann"));
    config->SetStringValue(request, QStringLiteral("PASSWORD"), QStringLiteral("secret"));
    const Handle consumers = config->NewList();
    config->ListAppend(consumers, QStringLiteral("OLCONSUMER"));
    config->SetHandleValue(request, QStringLiteral("ConsumerIDs"), consumers);
    auto answer = std::make_shared<CopyingCallback>(*config);
    const qint32 first = config->SubmitRequest(request, answer);
    const qint32 second = config->SubmitRequest(request, std::make_shared<CopyingCallback>(*config));
    config->ReleaseHandle(consumers);
    config->ReleaseHandle(request);
    QVERIFY(first > 0);
    QVERIFY(second > first);

    // What the answer carries is the client contract's; here: the ID, and who hears what.
    QTRY_COMPARE(answer->received.size(), 1);
    const qint32 id = answer->received.first()->bag("Result")->number("SUBSCRIPTIONID");
    QVERIFY(id > 0);

    // Two adds: the other consumer hears of both, then of each binding; the asker of neither add.
    QTRY_COMPARE(outlookEvents->received.size(), 4);
    QCOMPARE(outlookEvents->received.at(0)->text("MESSAGE"), QStringLiteral("SubscriptionAdded"));
    QCOMPARE(outlookEvents->received.at(0)->bag("Result")->text("SUBSCRIPTIONID").toInt(), id);
    QCOMPARE(outlookEvents->received.at(1)->text("MESSAGE"), QStringLiteral("SubscriptionBindingChanged"));
    QCOMPARE(outlookEvents->received.at(1)->bag("Result")->text("ORIGINATOR"),
             QStringLiteral("CONFIGCONSUMER"));
    QCOMPARE(idsOf(outlookEvents->received.at(1)), QList<qint32>{id});
    QTRY_COMPARE(configEvents->received.size(), 2);
    for (const auto &event : configEvents->received)
        QCOMPARE(event->text("MESSAGE"), QStringLiteral("SubscriptionBindingChanged"));

    QCOMPARE(ItemText(*config, id, QStringLiteral("USER")), QStringLiteral("ann"));
    QCOMPARE(ItemText(*config, id, QStringLiteral("PASSWORD")), QStringLiteral("secret"));
    QCOMPARE(ItemText(*config, id, QStringLiteral("UPDATEFREQ")), QStringLiteral("-1"));
    QCOMPARE(ItemText(*config, id, QStringLiteral("DELETEUNREAD")), QStringLiteral("-1"));
    QCOMPARE(ConsumerItems(*config, QStringLiteral("OLCONSUMER")), (QList<int>{id, id + 1}));
    QCOMPARE(ConsumerItems(*config, QStringLiteral("*")), (QList<int>{id, id + 1}));
    QCOMPARE(ConsumerItems(*config, QStringLiteral("MEDIACONSUMER")), QList<int>{});
}

void tst_EngineCore::itemBagLeavesUnknownValuesOut()
{
    auto c = client();
    const qint32 id = add(*c, QStringLiteral("http://b/rss"));
    QVERIFY(id > 0);

    const Handle bag = c->GetItemBag(kNews, id, 0);
    QCOMPARE(c->GetLongValue(bag, QStringLiteral("SUBSCRIPTIONID")), id);
    QCOMPARE(c->GetLongValue(bag, QStringLiteral("USER")), kMissing);
    QCOMPARE(c->GetStringValue(bag, QStringLiteral("LASTUPDATESTATUS")), kMissingText);
    QCOMPARE(c->GetStringValue(bag, QStringLiteral("LastDateCheck")), kMissingText);
    QCOMPARE(c->GetStringValue(bag, QStringLiteral("NEXTUPDATETIME")), kMissingText);
    QCOMPARE(c->GetStringValue(bag, QStringLiteral("FOLDERTITLE")), kMissingText);
    // A feed added without a category sits at the top of the tree, not under "-237237".
    QCOMPARE(c->GetStringValue(bag, QStringLiteral("CATEGORY")), QString());
    QCOMPARE(c->GetLongValue(bag, QStringLiteral("ITEMREADCOUNT")), 0);
    QCOMPARE(c->GetLongValue(bag, QStringLiteral("ITEMUNREADCOUNT")), 0);
    c->ReleaseHandle(bag);

    setSetting(*c, QStringLiteral("OLCONSUMER"), QStringLiteral("SubscriptionSpecifics_%1").arg(id),
               QStringLiteral("FOLDERTITLE"), QStringLiteral("My folder"));
    QCOMPARE(ItemText(*c, id, QStringLiteral("FOLDERTITLE")), QStringLiteral("My folder"));

    SideConnection side(m_engine->core().databasePath());
    QVERIFY(
        side.exec(QStringLiteral("INSERT INTO articles (subscription_id, guid, is_read) VALUES (%1, 'a', 1),"
                                 " (%1, 'b', 0), (%1, 'c', 0)")
                      .arg(id)));
    QCOMPARE(ItemText(*c, id, QStringLiteral("ITEMREADCOUNT")), QStringLiteral("1"));
    QCOMPARE(ItemText(*c, id, QStringLiteral("ITEMUNREADCOUNT")), QStringLiteral("2"));

    QVERIFY_THROWS_EXCEPTION(EngineError, c->GetItemBag(kNews, id + 100, 0));
}

void tst_EngineCore::updateItemKeepsEveryNameAndMakesItDue()
{
    auto c = client();
    const qint32 id = add(*c, QStringLiteral("http://c/atom"));
    const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-1);

    const Handle values = c->NewBag();
    c->SetLongValue(values, QStringLiteral("UPDATEFREQ"), 7200);
    c->SetStringValue(values, QStringLiteral("DELETEREAD"), QStringLiteral("86400"));
    c->SetStringValue(values, QStringLiteral("LastDateCheck"), QStringLiteral("2024-05-01T14:00:00+02:00"));
    c->SetStringValue(values, QStringLiteral("SearchLimit"), QStringLiteral("25"));
    c->SetLongValue(values, QStringLiteral("SUBSCRIPTIONID"), 999);
    c->UpdateItem(kNews, id, values);
    c->ReleaseHandle(values);

    QCOMPARE(ItemText(*c, id, QStringLiteral("UPDATEFREQ")), QStringLiteral("7200"));
    QCOMPARE(ItemText(*c, id, QStringLiteral("DELETEREAD")), QStringLiteral("86400"));
    QCOMPARE(ItemText(*c, id, QStringLiteral("LastDateCheck")), QStringLiteral("2024-05-01T12:00:00Z"));
    QCOMPARE(ItemText(*c, id, QStringLiteral("searchlimit")), QStringLiteral("25"));
    QCOMPARE(ItemText(*c, id, QStringLiteral("SUBSCRIPTIONID")).toInt(), id);
    const QDateTime due =
        QDateTime::fromString(ItemText(*c, id, QStringLiteral("NEXTUPDATETIME")), Qt::ISODate);
    QVERIFY(due >= before && due <= QDateTime::currentDateTimeUtc().addSecs(1));

    // A bad value undoes the whole update, names applied before it included.
    const Handle bad = c->NewBag();
    c->SetStringValue(bad, QStringLiteral("TITLE"), QStringLiteral("Changed"));
    c->SetStringValue(bad, QStringLiteral("UPDATEFREQ"), QStringLiteral("soon"));
    QVERIFY_THROWS_EXCEPTION(EngineError, c->UpdateItem(kNews, id, bad));
    QVERIFY_THROWS_EXCEPTION(EngineError, c->UpdateItem(kNews, id + 100, bad));
    c->ReleaseHandle(bad);
    QCOMPARE(ItemText(*c, id, QStringLiteral("TITLE")), QStringLiteral("Title of http://c/atom"));
    QCOMPARE(ItemText(*c, id, QStringLiteral("UPDATEFREQ")), QStringLiteral("7200"));

    // A login inside an address leaves it for USER and PASSWORD; one given beside it wins.
    const qint32 secret = add(*c, QStringLiteral("https://ann:s3cret@e/feed"));
    QCOMPARE(ItemText(*c, secret, QStringLiteral("URL")), QStringLiteral("https://e/feed"));
    QCOMPARE(ItemText(*c, secret, QStringLiteral("USER")), QStringLiteral("ann"));
    QCOMPARE(ItemText(*c, secret, QStringLiteral("PASSWORD")), QStringLiteral("s3cret"));
    const Handle moved = c->NewBag();
    c->SetStringValue(moved, QStringLiteral("URL"), QStringLiteral("http://bob:pw@e/other"));
    c->SetStringValue(moved, QStringLiteral("USER"), QStringLiteral("carol"));
    c->UpdateItem(kNews, secret, moved);
    c->ReleaseHandle(moved);
    QCOMPARE(ItemText(*c, secret, QStringLiteral("URL")), QStringLiteral("http://e/other"));
    QCOMPARE(ItemText(*c, secret, QStringLiteral("USER")), QStringLiteral("carol"));
}

void tst_EngineCore::bindItemFollowsTheDeliveryRule()
{
    std::shared_ptr<CopyingCallback> events;
    auto config = client(QStringLiteral("CONFIGCONSUMER"), &events);
    auto outlook = client(QStringLiteral("OLCONSUMER"));
    const QString ol = QStringLiteral("OLCONSUMER");
    const qint32 id = add(*config, QStringLiteral("http://d/feed"), {ol});
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
    const QStringList flags = {QStringLiteral("FALSE"), QStringLiteral("TRUE"), QStringLiteral("FALSE"),
                               QStringLiteral("TRUE")};
    const QStringList originators = {QStringLiteral("CONFIGCONSUMER"), ol, QStringLiteral("CONFIGCONSUMER"),
                                     QStringLiteral("CONFIGCONSUMER")};
    for (int i = 0; i < flags.size(); ++i) {
        const auto &event = events->received.at(i + 1);
        QCOMPARE(event->bag("Result")->text("SubscriptionBindFlag"), flags.at(i));
        QCOMPARE(event->bag("Result")->text("ORIGINATOR"), originators.at(i));
        QCOMPARE(event->bag("Result")->text("CONSUMERID"), ol);
        QCOMPARE(idsOf(event), QList<qint32>{id});
    }

    QVERIFY_THROWS_EXCEPTION(EngineError, config->BindItem(ol, kNews, id, 2));
    QVERIFY_THROWS_EXCEPTION(EngineError, config->BindItem(ol, kNews, id + 100, 1));
}

void tst_EngineCore::bindItemKeepsOrDropsDeliveredArticles()
{
    auto c = client(QStringLiteral("CONFIGCONSUMER"));
    const QString ol = QStringLiteral("OLCONSUMER");
    const qint32 id = add(*c, QStringLiteral("http://e/feed"));
    SideConnection side(m_engine->core().databasePath());
    QVERIFY(side.exec(
        QStringLiteral("INSERT INTO articles (subscription_id, guid) VALUES (%1, 'x'), (%1, 'y')").arg(id)));
    const auto markDelivered = [&] {
        return side.exec(
            QStringLiteral("INSERT OR IGNORE INTO delivered_articles (consumer_id, article_id, delivered_at)"
                           " SELECT 'OLCONSUMER', id, 'now' FROM articles WHERE subscription_id = %1")
                .arg(id));
    };
    const auto delivered = [&] {
        return side.number(QStringLiteral("SELECT COUNT(*) FROM delivered_articles"));
    };

    c->BindItem(ol, kNews, id, 1);
    QVERIFY(markDelivered());
    c->BindItem(ol, kNews, id, 1); // unbound, articles kept in Outlook
    QCOMPARE(delivered(), 2);
    c->BindItem(ol, kNews, id, 1);
    c->BindItem(ol, kNews, id, 0); // unbound, articles removed
    QCOMPARE(delivered(), 0);
}

void tst_EngineCore::removeItemTakesEverythingWithIt()
{
    auto c = client(QStringLiteral("CONFIGCONSUMER"));
    const qint32 id = add(*c, QStringLiteral("http://f/feed"), {QStringLiteral("OLCONSUMER")});
    const qint32 kept = add(*c, QStringLiteral("http://g/feed"));
    const QString section = QStringLiteral("SubscriptionSpecifics_%1").arg(id);
    const QString keptSection = QStringLiteral("SubscriptionSpecifics_%1").arg(kept);
    setSetting(*c, QStringLiteral("OLCONSUMER"), section, QStringLiteral("FOLDERTITLE"), QStringLiteral("F"));
    setSetting(*c, QStringLiteral("MEDIACONSUMER"), section, QStringLiteral("EnableAutoDownload"),
               QStringLiteral("1"));
    setSetting(*c, QStringLiteral("OLCONSUMER"), keptSection, QStringLiteral("FOLDERTITLE"),
               QStringLiteral("G"));
    SideConnection side(m_engine->core().databasePath());
    QVERIFY(
        side.exec(QStringLiteral("INSERT INTO articles (subscription_id, guid) VALUES (%1, 'x')").arg(id)));

    c->RemoveItem(kNews, id, 1);
    QVERIFY_THROWS_EXCEPTION(EngineError, c->GetItemBag(kNews, id, 0));
    QCOMPARE(ConsumerItems(*c, QStringLiteral("*")), QList<int>{kept});
    QCOMPARE(ConsumerItems(*c, QStringLiteral("OLCONSUMER")), QList<int>{});
    QCOMPARE(setting(*c, QStringLiteral("OLCONSUMER"), section, QStringLiteral("FOLDERTITLE")), kMissingText);
    QCOMPARE(setting(*c, QStringLiteral("MEDIACONSUMER"), section, QStringLiteral("EnableAutoDownload")),
             kMissingText);
    QCOMPARE(setting(*c, QStringLiteral("OLCONSUMER"), keptSection, QStringLiteral("FOLDERTITLE")),
             QStringLiteral("G"));
    QCOMPARE(side.number(QStringLiteral("SELECT COUNT(*) FROM articles")), 0);

    c->RemoveItem(kNews, id, 1); // already gone: harmless
    // IDs are never handed out twice, so old per-subscription settings cannot be inherited.
    QVERIFY(add(*c, QStringLiteral("http://h/feed")) > kept);
}

void tst_EngineCore::requestsThatCannotBeServedAreAnswered()
{
    auto c = client(QStringLiteral("CONFIGCONSUMER"));
    const auto submit = [&](const QString &kind, const QString &url) {
        const Handle request = c->CreateItemRequest(kNews, QStringLiteral("t"), url);
        if (kind.isEmpty())
            c->SetStringValue(request, QStringLiteral("REQUEST"), QString());
        else
            c->SetStringValue(request, QStringLiteral("REQUEST"), kind);
        auto answer = std::make_shared<CopyingCallback>(*c);
        c->SubmitRequest(request, answer);
        c->ReleaseHandle(request);
        return answer;
    };
    const auto unknown = submit(QStringLiteral("FROB"), QStringLiteral("http://x"));
    const auto noKind = submit(QString(), QStringLiteral("http://x"));
    const auto noUrl = submit(QStringLiteral("ADD"), QString());
    auto preview = std::make_shared<CopyingCallback>(*c);
    QVERIFY(!c->RequestPreview(kNews, QStringLiteral("gopher://x"), preview).isEmpty());

    for (const auto &answer : {unknown, noKind, noUrl, preview}) {
        QTRY_COMPARE(answer->received.size(), 1);
        QCOMPARE(answer->received.first()->text("MESSAGE"), QStringLiteral("RequestFailed"));
        QVERIFY(!answer->received.first()->text("ERROR").isEmpty());
    }
    QVERIFY(unknown->received.first()->text("ERROR").contains(QStringLiteral("FROB")));
    QVERIFY(preview->received.first()->text("ERROR").contains(QStringLiteral("gopher://x")));
    QCOMPARE(ConsumerItems(*c, QStringLiteral("*")), QList<int>{});
}

void tst_EngineCore::badCallsRaiseReadableErrors()
{
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
    QVERIFY(message(QStringLiteral("Frobnicate"), {}).startsWith(QStringLiteral("Unknown engine operation")));
    QVERIFY(message(QStringLiteral("GetItemBag"), {kNews, QStringLiteral("1"), 0})
                .startsWith(QStringLiteral("bad arguments for GetItemBag")));
    QVERIFY(message(QStringLiteral("GetItemBag"), {kNews, 1})
                .startsWith(QStringLiteral("bad arguments for GetItemBag")));
    QVERIFY(message(QStringLiteral("SetSettings"), {QStringLiteral("X"), QString(), qint32(1)})
                .startsWith(QStringLiteral("bad arguments for SetSettings")));
    QVERIFY(message(QStringLiteral("ListConsumerItems"), {QStringLiteral("*"), QStringLiteral("MAIL")})
                .contains(QStringLiteral("MAIL")));
    QVERIFY(message(QStringLiteral("Connect"), {QString(), 1}).contains(QStringLiteral("consumer")));
    core.closeSession(session);
    QVERIFY(message(QStringLiteral("SyncNow"), {}).contains(QStringLiteral("not open")));

    // A data folder that cannot be made: open() says why, and calls fail instead of crashing.
    QTemporaryFile blocker;
    QVERIFY(blocker.open());
    EngineCore broken(blocker.fileName() + QStringLiteral("/data"));
    QString why;
    QVERIFY(!broken.open(&why));
    QVERIFY(why.contains(QStringLiteral("data folder")));
    QVERIFY_THROWS_EXCEPTION(EngineError, broken.call(broken.openSession({}), QStringLiteral("SyncNow"), {}));
}

void tst_EngineCore::reopenedStoreKeepsEverything()
{
    QTemporaryDir dir;
    const QString folder = dir.filePath(QStringLiteral("nested/data"));
    qint32 id = 0;
    {
        EngineCore core(folder);
        QVERIFY(core.open());
        auto c = LinkedSubscribeClient::create(std::make_unique<InProcessLink>(&core));
        c->Connect(QStringLiteral("CONFIGCONSUMER"), std::make_shared<CopyingCallback>(*c));
        id = add(*c, QStringLiteral("http://kept/feed"), {QStringLiteral("OLCONSUMER")});
        QVERIFY(id > 0);
        setSetting(*c, QStringLiteral("ENGINE"), QString(), QStringLiteral("GUID"), QStringLiteral("42"));
        c->SetSyncSettings(1, QStringLiteral("https://sync"), QStringLiteral("ann"), QStringLiteral("pw"),
                           7200);
        c->Log(QStringLiteral("UI Client <> Engine comms established\r\n"), 999);
        QCOMPARE(c->LiveHandleCount(), 0);
    }
    {
        // An address with a login in it, as older versions stored them.
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("older"));
        db.setDatabaseName(QDir(folder).filePath(QStringLiteral("engine.sqlite")));
        QVERIFY(db.open());
        QVERIFY(
            QSqlQuery(db).exec(QStringLiteral("UPDATE subscriptions SET url = 'http://ann:pw@kept/feed'")));
        db.close();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("older"));
    EngineCore core(folder);
    QVERIFY(core.open());
    auto c = LinkedSubscribeClient::create(std::make_unique<InProcessLink>(&core));
    QCOMPARE(ItemText(*c, id, QStringLiteral("URL")), QStringLiteral("http://kept/feed"));
    QCOMPARE(ItemText(*c, id, QStringLiteral("USER")), QStringLiteral("ann"));
    QCOMPARE(ItemText(*c, id, QStringLiteral("PASSWORD")), QStringLiteral("pw"));
    QCOMPARE(ConsumerItems(*c, QStringLiteral("OLCONSUMER")), QList<int>{id});
    QCOMPARE(setting(*c, QStringLiteral("ENGINE"), QString(), QStringLiteral("GUID")), QStringLiteral("42"));
    const Handle sync = c->GetSyncSettings();
    QCOMPARE(c->GetLongValue(sync, QStringLiteral("SyncRemote")), 1);
    QCOMPARE(c->GetStringValue(sync, QStringLiteral("SyncServer")), QStringLiteral("https://sync"));
    QCOMPARE(c->GetLongValue(sync, QStringLiteral("SyncFrequency")), 7200);
    c->ReleaseHandle(sync);
    QCOMPARE(c->LiveHandleCount(), 0);

    QFile log(QDir(folder).filePath(QStringLiteral("engine.log")));
    QVERIFY(log.open(QIODevice::ReadOnly));
    const QList<QByteArray> lines = log.readAll().split('\n');
    QCOMPARE(lines.size(), 2); // one line and the final line end
    QVERIFY(lines.first().endsWith("\t999\tCONFIGCONSUMER\tUI Client <> Engine comms established"));
}

void tst_EngineCore::connectionsAndTermination()
{
    std::shared_ptr<CopyingCallback> old, replaced, media;
    auto config = client(QStringLiteral("CONFIGCONSUMER"), &old);
    config->Connect(QStringLiteral("CONFIGCONSUMER"), replaced = std::make_shared<CopyingCallback>(*config));
    client(QStringLiteral("MEDIACONSUMER"), &media);
    client(); // never connected: hears nothing
    QCOMPARE(m_engine->core().connectedConsumers(),
             (QStringList{QStringLiteral("CONFIGCONSUMER"), QStringLiteral("MEDIACONSUMER")}));

    m_engine->core().announceTermination();
    QTRY_COMPARE(replaced->received.size(), 1);
    QTRY_COMPARE(media->received.size(), 1);
    QCOMPARE(replaced->received.first()->text("MESSAGE"), QStringLiteral("EngineTerminated"));
    QCOMPARE(old->received.size(), 0);

    m_clients.removeLast();
    QCOMPARE(m_engine->core().connectedConsumers().size(), 2);
    m_clients.removeLast();
    QCOMPARE(m_engine->core().connectedConsumers(), QStringList{QStringLiteral("CONFIGCONSUMER")});
}

QTEST_GUILESS_MAIN(tst_EngineCore)
#include "tst_EngineCore.moc"
