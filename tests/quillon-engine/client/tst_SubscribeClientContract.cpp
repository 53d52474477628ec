#include "CopyingCallback.h"
#include "DaemonProcess.h"
#include "EngineCalls.h"
#include "LinkedSubscribeClient.h"
#include "SocketLink.h"
#include "TestEngine.h"

#include <QTcpServer>
#include <QTest>

using namespace quillon;
using namespace EngineCalls;

// The behaviour every consumer relies on, checked once per transport.
class tst_SubscribeClientContract : public QObject
{
    Q_OBJECT
public:
    enum class Transport { InProcess, Socket };
    explicit tst_SubscribeClientContract(Transport transport) : m_transport(transport) {}

private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void bagsListsAndHandlesStayOnTheClient();
    void settingsAndItemReadsStayCurrent();
    void crashedEngineIsFoundAgain();
    // Last: it stops the engine.
    void stoppingTellsConnectedConsumers();

private:
    SubscribeClientPtr newClient();

    Transport m_transport;
    std::unique_ptr<TestEngine> m_engine;
    std::unique_ptr<DaemonProcess> m_daemon;
    QList<SubscribeClientPtr> m_clients;
};

void tst_SubscribeClientContract::initTestCase()
{
    if (m_transport == Transport::InProcess) {
        qInfo("transport: in-process");
        m_engine = std::make_unique<TestEngine>();
        QVERIFY(m_engine->isReady());
    } else {
        qInfo("transport: socket");
        m_daemon = std::make_unique<DaemonProcess>();
        QVERIFY2(m_daemon->start(), qPrintable(m_daemon->errorText()));
    }
}

void tst_SubscribeClientContract::cleanup()
{
    for (const auto &client : std::as_const(m_clients))
        QCOMPARE(client->LiveHandleCount(), 0);
    m_clients.clear();
}

SubscribeClientPtr tst_SubscribeClientContract::newClient()
{
    SubscribeClientPtr client = m_engine ? m_engine->newClient() : m_daemon->newClient();
    m_clients.append(client);
    return client;
}

// Bags, lists and handles live in the client, whatever carries its calls.
void tst_SubscribeClientContract::bagsListsAndHandlesStayOnTheClient()
{
    auto client = newClient();
    const Handle bag = client->NewBag();
    const Handle inner = client->NewBag();
    const Handle list = client->NewList();
    client->SetStringValue(bag, "TITLE", "Café ☕");
    client->SetLongValue(bag, "UPDATEFREQ", 3600);
    client->SetStringValue(bag, "Count", " 42 ");
    QCOMPARE(QStringList({client->GetStringValue(bag, "title"), client->GetStringValue(bag, "UPDATEFREQ"),
                          client->GetStringValue(bag, "USER")}),
             QStringList({"Café ☕", "3600", kMissingText}));
    QCOMPARE(QList<qint32>({client->GetLongValue(bag, "Count"), client->GetLongValue(bag, "TITLE"),
                            client->GetLongValue(bag, "USER"), client->GetHandleValue(bag, "Result")}),
             QList<qint32>({42, 0, kMissing, 0}));
    const Handle names = client->ListNames(bag);
    QCOMPARE(QStringList({client->ListString(names, 0), client->ListString(names, 2)}),
             QStringList({"TITLE", "Count"}));
    QCOMPARE(client->ListCount(names), 3);

    client->SetStringValue(inner, "URL", "http://127.0.0.1/feed");
    client->ListAppend(list, "OLCONSUMER");
    client->ListAppend(list, "17");
    client->SetHandleValue(bag, "Result", inner);
    client->SetHandleValue(bag, "ConsumerIDs", list);
    const Handle innerAgain = client->GetHandleValue(bag, "Result");
    const Handle listAgain = client->GetHandleValue(bag, "ConsumerIDs");
    QCOMPARE(client->GetStringValue(innerAgain, "URL"), "http://127.0.0.1/feed");
    QCOMPARE(client->ListCount(listAgain), 2);
    QCOMPARE(client->ListString(listAgain, 0), "OLCONSUMER");
    QCOMPARE(client->ListLong(listAgain, 1), 17);
    QCOMPARE(client->ListHandle(listAgain, 0), 0);
    QVERIFY_THROWS_EXCEPTION(EngineError, (void)client->ListLong(listAgain, 2));
    QVERIFY_THROWS_EXCEPTION(EngineError, (void)client->ListString(listAgain, -1));
    // A bag may not end up inside itself, however deep; a bag holding a list has no text form.
    QVERIFY_THROWS_EXCEPTION(EngineError, client->SetHandleValue(inner, "loop", bag));
    QVERIFY_THROWS_EXCEPTION(EngineError, client->SetHandleValue(bag, "self", bag));
    QVERIFY_THROWS_EXCEPTION(EngineError, (void)client->BagToText(bag));
    // Handles of the wrong kind, released or never given out are refused.
    QVERIFY_THROWS_EXCEPTION(EngineError, (void)client->GetStringValue(list, "x"));
    QVERIFY_THROWS_EXCEPTION(EngineError, (void)client->ListCount(bag));
    for (const Handle handle : {bag, inner, list, names, innerAgain, listAgain})
        client->ReleaseHandle(handle);
    QVERIFY_THROWS_EXCEPTION(EngineError, client->ReleaseHandle(bag));
    QVERIFY_THROWS_EXCEPTION(EngineError, client->SetStringValue(bag, "x", "y"));
    QVERIFY_THROWS_EXCEPTION(EngineError, client->ReleaseHandle(0));
    // Handles the engine hands out count like any other.
    const Handle items = client->ListConsumerItems("*", kNews);
    QCOMPARE(client->LiveHandleCount(), 1);
    client->ReleaseHandle(items);

    // A bag of a search source becomes a search address; one without a source is no search.
    const Handle search = client->NewBag();
    client->SetStringValue(search, "guid", "{src-1}");
    client->SetStringValue(search, "keywords", "rock & roll");
    client->SetLongValue(search, "limit", 10);
    QCOMPARE(client->BagToText(search), "search?guid=%7Bsrc-1%7D&keywords=rock%20%26%20roll&limit=10");
    const Handle other = client->NewBag();
    client->SetStringValue(other, "keywords", "x=y");
    QCOMPARE(client->BagToText(other), "bag?keywords=x%3Dy");
    client->ReleaseHandle(search);
    client->ReleaseHandle(other);
    // A failure of the engine says why and leaves the client usable.
    try {
        (void)client->GetItemBag(kNews, 987654321, 0);
        QFAIL("an unknown subscription was found");
    } catch (const EngineError &e) {
        QVERIFY(!e.message().isEmpty());
    }
    client->Log("after a failure", 1);
}

void tst_SubscribeClientContract::settingsAndItemReadsStayCurrent()
{
    auto client = newClient();
    auto other = newClient();
    const QString section = "ConfigDefaults";
    const Handle values = client->NewBag();
    client->SetStringValue(values, "ContractFirstRun", "1");
    client->SetStringValue(values, "ContractName", "Zoë");
    client->SetSettings("CONFIGCONSUMER", section, values);
    client->ReleaseHandle(values);

    // Names are read without regard to case; what was never written comes back as given.
    const Handle keys = other->NewBag();
    other->SetStringValue(keys, "contractfirstrun", "0");
    other->SetStringValue(keys, "ContractName", QString());
    other->SetStringValue(keys, "ContractNeverSet", kMissingText);
    other->SetLongValue(keys, "ContractNumber", 30);
    const Handle stored = other->GetSettings("CONFIGCONSUMER", section, keys);
    QCOMPARE(other->GetStringValue(stored, "contractfirstrun"), "1");
    QCOMPARE(other->GetStringValue(stored, "ContractName"), "Zoë");
    QCOMPARE(other->GetStringValue(stored, "ContractNeverSet"), kMissingText);
    QCOMPARE(other->GetLongValue(stored, "ContractNumber"), 30);

    // Settings are kept per consumer and section.
    const Handle otherConsumer = other->GetSettings("OLCONSUMER", section, keys);
    QCOMPARE(other->GetStringValue(otherConsumer, "contractfirstrun"), "0");
    const Handle otherSection = other->GetSettings("CONFIGCONSUMER", QString(), keys);
    QCOMPARE(other->GetStringValue(otherSection, "ContractName"), QString());
    for (const Handle handle : {keys, stored, otherConsumer, otherSection})
        other->ReleaseHandle(handle);

    // Items: one bag per ID asked, in order; an unknown ID gives an empty bag.
    const qint32 a = AddSubscription(*client, "A", "http://127.0.0.1:9/a");
    const qint32 b = AddSubscription(*client, "B", "http://127.0.0.1:9/b");
    QVERIFY(a > 0 && b > 0);
    const auto titleOf = [&client](qint32 id) { return ItemText(*client, id, "TITLE"); };
    const auto retitle = [](SubscribeClient &by, qint32 id, const QString &title) {
        const Handle changes = by.NewBag();
        by.SetStringValue(changes, "TITLE", title);
        by.UpdateItem(kNews, id, changes);
        by.ReleaseHandle(changes);
    };
    const Handle ids = client->NewList();
    for (const qint32 id : {b, 999999, a})
        client->ListAppend(ids, QString::number(id));
    const Handle bags = client->GetItemBags(kNews, ids);
    client->ReleaseHandle(ids);
    QCOMPARE(client->ListCount(bags), 3);
    QList<qint32> read;
    for (qint32 i = 0; i < 3; ++i) {
        const Handle bag = client->ListHandle(bags, i);
        read.append(client->GetLongValue(bag, "SUBSCRIPTIONID"));
        client->ReleaseHandle(bag);
    }
    client->ReleaseHandle(bags);
    QCOMPARE(read, QList<qint32>({b, kMissing, a}));

    // Read ahead after listing everything: this client's own change shows at once...
    client->ReleaseHandle(client->ListConsumerItems("*", kNews));
    QCOMPARE(titleOf(a), "A");
    retitle(*client, b, "B changed here");
    QCOMPARE(titleOf(b), "B changed here");
    // ...and another's once control has been back in the event loop.
    client->ReleaseHandle(client->ListConsumerItems("*", kNews));
    QCOMPARE(titleOf(a), "A");
    QCoreApplication::processEvents();
    retitle(*other, b, "B changed elsewhere");
    QCOMPARE(titleOf(b), "B changed elsewhere");
    client->RemoveItem(kNews, a, 1);
    client->RemoveItem(kNews, b, 1);
}

void tst_SubscribeClientContract::crashedEngineIsFoundAgain()
{
    if (!m_daemon)
        QSKIP("an engine in this process cannot crash apart from its client");
    const QString name = m_daemon->socketName();
    auto client =
        LinkedSubscribeClient::create(SocketLink::open(name), [name]() -> std::unique_ptr<EngineLink> {
            return SocketLink::open(name, 500);
        });
    m_clients.append(client);
    auto events = std::make_shared<CopyingCallback>(*client);
    client->Connect("CONFIGCONSUMER", events);
    const Handle kept = client->NewBag();
    client->SetStringValue(kept, "name", "value");
    QTcpServer silent;
    QVERIFY(silent.listen(QHostAddress::LocalHost));
    auto preview = std::make_shared<CopyingCallback>(*client);
    client->RequestPreview(kNews, QStringLiteral("http://127.0.0.1:%1/feed").arg(silent.serverPort()),
                           preview);
    QTRY_VERIFY(silent.hasPendingConnections());

    m_daemon->process().kill();
    QVERIFY(m_daemon->process().waitForFinished(5000));
    // The answer the dead engine owed comes as an error; a crash is no "EngineTerminated".
    QTRY_COMPARE(preview->received.size(), 1);
    QCOMPARE(preview->received.first()->text("ERROR"), "The engine connection was lost");
    QVERIFY(!client->IsLinked());

    auto restarted = std::make_unique<DaemonProcess>(name);
    QVERIFY2(restarted->start(), qPrintable(restarted->errorText()));
    m_daemon = std::move(restarted);
    QTRY_VERIFY_WITH_TIMEOUT(client->IsLinked(), 10000);
    auto other = newClient();
    QVERIFY(AddSubscription(*other, "After", "http://127.0.0.1:9/after") > 0);
    QTRY_VERIFY(!events->named("SubscriptionAdded").isEmpty());
    QVERIFY(events->named("EngineTerminated").isEmpty());
    QCOMPARE(client->GetStringValue(kept, "name"), "value");
    client->ReleaseHandle(kept);
}

void tst_SubscribeClientContract::stoppingTellsConnectedConsumers()
{
    auto client = newClient();
    auto events = std::make_shared<CopyingCallback>(*client);
    client->Connect("CONFIGCONSUMER", events);
    if (m_daemon) {
        m_daemon->process().terminate();
        QTRY_VERIFY(!events->named("EngineTerminated").isEmpty());
        QProcess &process = m_daemon->process();
        QVERIFY(process.state() == QProcess::NotRunning || process.waitForFinished(15000));
        QCOMPARE(m_daemon->stop(), 0);
    } else {
        m_engine->core().announceTermination();
        QTRY_VERIFY(!events->named("EngineTerminated").isEmpty());
        m_engine.reset();
    }
    QVERIFY_THROWS_EXCEPTION(EngineError, client->Log("too late", 1));
}

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    int status = 0;
    for (const auto transport : {tst_SubscribeClientContract::Transport::InProcess,
                                 tst_SubscribeClientContract::Transport::Socket}) {
        tst_SubscribeClientContract test(transport);
        status |= QTest::qExec(&test, argc, argv);
    }
    return status;
}

#include "tst_SubscribeClientContract.moc"
