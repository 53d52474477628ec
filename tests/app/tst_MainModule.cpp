#include "ClientAccess.h"
#include "EngineCalls.h"
#include "ForwardingSubscribeClient.h"
#include "LinkedSubscribeClient.h"
#include "MainModule.h"
#include "SubscribeClientFactory.h"
#include "TestEngine.h"
#include "callbackSupport.h"
#include "frmMainWindow.h"

#include <QTest>

using namespace quillon;

// An engine client that also holds another feed reader's subscriptions, made up by the test.
class ReaderClient : public ForwardingSubscribeClient
{
public:
    using ForwardingSubscribeClient::ForwardingSubscribeClient;
    static constexpr Handle kReaderList = 1 << 30;
    QList<QHash<QString, QString>> outlines;
    QStringList requestedUrls;
    int readerListsOut = 0;

    qint32 SubmitRequest(Handle bag, CallbackPtr callback) override
    {
        requestedUrls.append(m_inner->GetStringValue(bag, QStringLiteral("URL")));
        return m_inner->SubmitRequest(bag, std::move(callback));
    }

    Handle ListReaderSubscriptions(const QString &) override
    {
        ++readerListsOut;
        return kReaderList;
    }
    qint32 ListCount(Handle list) override
    {
        return list == kReaderList ? qint32(outlines.size()) : m_inner->ListCount(list);
    }
    Handle ListHandle(Handle list, qint32 index) override
    {
        if (list != kReaderList)
            return m_inner->ListHandle(list, index);
        const Handle bag = m_inner->NewBag();
        const auto &outline = outlines.at(index);
        for (auto it = outline.cbegin(); it != outline.cend(); ++it)
            m_inner->SetStringValue(bag, it.key(), it.value());
        return bag;
    }
    void ReleaseHandle(Handle handle) override
    {
        if (handle == kReaderList)
            --readerListsOut;
        else
            m_inner->ReleaseHandle(handle);
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
};

void tst_MainModule::init()
{
    m_engine = std::make_unique<TestEngine>();
    QVERIFY(m_engine->isReady());
    m_linked = std::dynamic_pointer_cast<LinkedSubscribeClient>(m_engine->newClient());
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
    QCOMPARE(MainModule::ConnectToEngine(QStringLiteral("CONFIGCONSUMER")), false);
    QCOMPARE(m_linked->PendingCallbackCount(), 1);
    QCOMPARE(MainModule::ConnectToEngine(QStringLiteral("CONFIGCONSUMER")), false);
    QCOMPARE(m_linked->PendingCallbackCount(), 1);
    QCOMPARE(ClientAccess::GetEngineClient(), SubscribeClientPtr(m_linked));
}

void tst_MainModule::unreachableEngineAsksForRetry()
{
    SubscribeClientFactory::SetCreator(
        []() -> SubscribeClientPtr { throw EngineError(QStringLiteral("nobody home")); });
    // Every tick retries; the reason is logged once, not once per tick.
    static int waitLines = 0;
    waitLines = 0;
    const QtMessageHandler previous =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &message) {
            waitLines += message.contains(QLatin1String("engine not reached")) ? 1 : 0;
        });
    bool retries = true;
    for (int tick = 0; tick < 3; ++tick)
        retries = MainModule::ConnectToEngine(QStringLiteral("CONFIGCONSUMER")) && retries;
    qInstallMessageHandler(previous);
    QVERIFY(retries);
    QCOMPARE(waitLines, 1);
    QVERIFY(!ClientAccess::GetEngineClient());
}

QStringList tst_MainModule::AddedUrls()
{
    QStringList urls;
    for (const qint32 id : EngineCalls::ConsumerItems(*m_linked, "*"))
        urls.append(EngineCalls::ItemText(*m_linked, id, QStringLiteral("URL")));
    urls.sort();
    return urls;
}

void tst_MainModule::readerImportSkipsAndFiltersAsEachReaderNeeds()
{
    auto reader = std::make_shared<ReaderClient>(m_linked);
    reader->outlines = {
        {{"title", "Kept"}, {"xmlUrl", "http://127.0.0.1/kept"}},
        {{"title", "Private"}, {"xmlUrl", "http://127.0.0.1/private"}, {"ng:useDefaultCredentials", "ngos"}},
        {{"title", "Blank"}, {"xmlUrl", " "}},
        {{"title", "Marker"}, {"xmlUrl", "-237237"}},
    };
    MainModule::ImportFromReader(reader, QStringLiteral("newsgator"));
    QCOMPARE(MainModule::SkippedOutlineCount(), 1);
    QCOMPARE(reader->requestedUrls, QStringList({"http://127.0.0.1/kept"}));
    QTRY_COMPARE(m_linked->PendingCallbackCount(), 0);
    QCOMPARE(AddedUrls(), QStringList({"http://127.0.0.1/kept"}));

    reader->requestedUrls.clear();
    MainModule::ImportFromReader(reader, QStringLiteral("intravnews"));
    QCOMPARE(reader->requestedUrls,
             QStringList({"http://127.0.0.1/kept", "http://127.0.0.1/private", " ", "-237237"}));
    QCOMPARE(MainModule::SkippedOutlineCount(), 1);
    QTRY_COMPARE(m_linked->PendingCallbackCount(), 0);
    QCOMPARE(reader->readerListsOut, 0);
}

QTEST_MAIN(tst_MainModule)
#include "tst_MainModule.moc"
