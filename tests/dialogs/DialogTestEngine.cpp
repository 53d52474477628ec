#include "DialogTestEngine.h"

#include "localization.h"

#include <QTest>

void EngineDialogTest::initTestCase()
{
    LoadStrings(qEnvironmentVariable("QUILLON_SOURCE_DIR") + QStringLiteral("/data/QuillonData"));
}

void EngineDialogTest::init()
{
    m_engine = std::make_unique<TestEngine>();
    QVERIFY(m_engine->isReady());
    m_client = m_engine->newClient();
    m_client->Connect(QStringLiteral("CONFIGCONSUMER"), std::make_shared<EngineCalls::IgnoreMessages>());
    m_prompts = std::make_unique<PromptRecorder>();
}

void EngineDialogTest::cleanup()
{
    m_prompts.reset();
    QCOMPARE(m_client->LiveHandleCount(), 0);
    m_client.reset();
    m_engine.reset();
}
