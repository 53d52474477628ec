#include "ClientAccess.h"
#include "EngineCalls.h"
#include "LinkedSubscribeClient.h"
#include "MainModule.h"
#include "SubscribeClientFactory.h"
#include "TestEngine.h"
#include "callbackSupport.h"
#include "frmMainWindow.h"

#include <QTest>

using namespace quillon;

// Another feed reader's subscriptions, made up by the test, and the addresses the import asked for.
struct ReaderFake
{
    QList<QHash<QString, QString>> outlines;
    QStringList requestedUrls;

    CallHook hook()
    {
        return {[this](const QString &operation, const QList<PropertyValue> &args,
                       const CallHook::Answer &) -> std::optional<PropertyValue> {
            if (operation == QLatin1String("SubmitRequest"))
                requestedUrls.append(std::get<BagPtr>(args.at(0))->text("URL"));
            if (operation != QLatin1String("ListReaderSubscriptions"))
                return std::nullopt;
            auto list = PropertyList::create();
            for (const auto &outline : std::as_const(outlines)) {
                auto bag = PropertyBag::create();
                for (auto it = outline.cbegin(); it != outline.cend(); ++it)
                    bag->setText(it.key(), it.value());
                list->append(bag);
            }
            return list;
        }};
    }
};

class tst_MainModule : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void connectingTwiceRegistersOneCallback();
    void unreachableEngineAsksForRetry();
    void readerImportSkipsAndFiltersAsEachReaderNeeds();

private:
    QStringList AddedUrls();

    std::unique_ptr<TestEngine> m_engine;
    std::shared_ptr<LinkedSubscribeClient> m_linked;
    ReaderFake m_reader;
};

void tst_MainModule::init()
{
    m_engine = std::make_unique<TestEngine>();
    QVERIFY(m_engine->isReady());
    m_reader = {};
    m_linked = m_engine->newClient(m_reader.hook());
    SubscribeClientFactory::SetCreator([this]() -> SubscribeClientPtr { return m_linked; });
}

void tst_MainModule::cleanup()
{
    MainModule::Reset();
    SubscribeClientFactory::SetCreator({});
    QCOMPARE(m_linked->LiveHandleCount(), 0);
    m_linked.reset();
    m_engine.reset();
}

void tst_MainModule::connectingTwiceRegistersOneCallback()
{
    QCOMPARE(MainModule::ConnectToEngine("CONFIGCONSUMER"), false);
    QCOMPARE(m_linked->PendingCallbackCount(), 1);
    QCOMPARE(MainModule::ConnectToEngine("CONFIGCONSUMER"), false);
    QCOMPARE(m_linked->PendingCallbackCount(), 1);
    QCOMPARE(ClientAccess::GetEngineClient(), SubscribeClientPtr(m_linked));
}

void tst_MainModule::unreachableEngineAsksForRetry()
{
    SubscribeClientFactory::SetCreator([]() -> SubscribeClientPtr { throw EngineError("nobody home"); });
    // Every tick retries; the reason is logged once, not once per tick.
    static int waitLines = 0;
    waitLines = 0;
    const QtMessageHandler previous =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &message) {
            waitLines += message.contains(QLatin1String("engine not reached")) ? 1 : 0;
        });
    bool retries = true;
    for (int tick = 0; tick < 3; ++tick)
        retries = MainModule::ConnectToEngine("CONFIGCONSUMER") && retries;
    qInstallMessageHandler(previous);
    QVERIFY(retries);
    QCOMPARE(waitLines, 1);
    QVERIFY(!ClientAccess::GetEngineClient());
}

QStringList tst_MainModule::AddedUrls()
{
    QStringList urls;
    for (const qint32 id : EngineCalls::ConsumerItems(*m_linked, "*"))
        urls.append(EngineCalls::ItemText(*m_linked, id, "URL"));
    urls.sort();
    return urls;
}

void tst_MainModule::readerImportSkipsAndFiltersAsEachReaderNeeds()
{
    m_reader.outlines = {
        {{"title", "Kept"}, {"xmlUrl", "http://127.0.0.1/kept"}},
        {{"title", "Private"}, {"xmlUrl", "http://127.0.0.1/private"}, {"ng:useDefaultCredentials", "ngos"}},
        {{"title", "Blank"}, {"xmlUrl", " "}},
        {{"title", "Marker"}, {"xmlUrl", "-237237"}},
    };
    MainModule::ImportFromReader(m_linked, "newsgator");
    QCOMPARE(MainModule::SkippedOutlineCount(), 1);
    QCOMPARE(m_reader.requestedUrls, QStringList({"http://127.0.0.1/kept"}));
    QTRY_COMPARE(m_linked->PendingCallbackCount(), 0);
    QCOMPARE(AddedUrls(), QStringList({"http://127.0.0.1/kept"}));

    m_reader.requestedUrls.clear();
    MainModule::ImportFromReader(m_linked, "intravnews");
    QCOMPARE(m_reader.requestedUrls,
             QStringList({"http://127.0.0.1/kept", "http://127.0.0.1/private", " ", "-237237"}));
    QCOMPARE(MainModule::SkippedOutlineCount(), 1);
    QTRY_COMPARE(m_linked->PendingCallbackCount(), 0); // cleanup finds the reader's list released
}

QTEST_MAIN(tst_MainModule)
#include "tst_MainModule.moc"
