#include "DialogTestEngine.h"

#include "HandleGuard.h"
#include "localization.h"

#include <QTest>

namespace {
// Keeps the subscription ID of one add answer.
class AddAnswer : public quillon::ISubscribeClientCallback
{
public:
    explicit AddAnswer(quillon::SubscribeClient &client) : m_client(client) {}
    void Setup(QObject *) override {}
    void Shutdown() override {}
    qint32 ProcessMessage(quillon::Handle &bag) override
    {
        HandleGuard result(m_client, m_client.GetHandleValue(bag, QStringLiteral("Result")));
        if (result.isValid())
            id = m_client.GetLongValue(result.get(), QStringLiteral("SUBSCRIPTIONID"));
        return 0;
    }

    qint32 id = 0;

private:
    quillon::SubscribeClient &m_client;
};

class IgnoreMessages : public quillon::ISubscribeClientCallback
{
public:
    void Setup(QObject *) override {}
    void Shutdown() override {}
    qint32 ProcessMessage(quillon::Handle &) override { return 0; }
};
} // namespace

namespace DialogTestEngine {

void ConnectClient(quillon::SubscribeClient &client)
{
    client.Connect(QStringLiteral("CONFIGCONSUMER"), std::make_shared<IgnoreMessages>());
}

qint32 AddSubscription(quillon::SubscribeClient &client, const QString &title, const QString &url)
{
    auto answer = std::make_shared<AddAnswer>(client);
    HandleGuard request(client, client.CreateItemRequest(QStringLiteral("NEWS"), title, url));
    client.SubmitRequest(request.get(), answer);
    return QTest::qWaitFor([&] { return answer->id > 0; }, 5000) ? answer->id : 0;
}

QString ItemText(quillon::SubscribeClient &client, qint32 id, const QString &name)
{
    HandleGuard bag(client, client.GetItemBag(QStringLiteral("NEWS"), id, 0));
    return client.GetStringValue(bag.get(), name);
}

} // namespace DialogTestEngine

void EngineDialogTest::initTestCase()
{
    LoadStrings(qEnvironmentVariable("QUILLON_SOURCE_DIR") + QStringLiteral("/data/QuillonData"));
}

void EngineDialogTest::init()
{
    m_engine = std::make_unique<TestEngine>();
    QVERIFY(m_engine->isReady());
    m_client = m_engine->newClient();
    DialogTestEngine::ConnectClient(*m_client);
    m_asked.clear();
}

void EngineDialogTest::cleanup()
{
    PromptSeam::SetHandler({});
    QCOMPARE(m_client->LiveHandleCount(), 0);
    m_client.reset();
    m_engine.reset();
}
