#pragma once

#include "EngineCalls.h"
#include "PromptRecorder.h"
#include "TestEngine.h"

#include <QObject>
#include <QTest>

#include <memory>

// The base of tests over a real engine: a fresh engine and a client connected as
// ConfigConsumer for each test function, the questions asked, and no handle left behind.
// List this header in the test's sources so that it is moc'ed.
class EngineClientTest : public QObject
{
    Q_OBJECT

protected:
    std::unique_ptr<TestEngine> m_engine;
    quillon::SubscribeClientPtr m_client;
    std::unique_ptr<PromptRecorder> m_prompts;

private Q_SLOTS:
    void init()
    {
        m_engine = std::make_unique<TestEngine>();
        QVERIFY(m_engine->isReady());
        m_client = m_engine->newClient();
        m_client->Connect(QStringLiteral("CONFIGCONSUMER"), std::make_shared<EngineCalls::IgnoreMessages>());
        m_prompts = std::make_unique<PromptRecorder>();
    }
    void cleanup()
    {
        m_prompts.reset();
        QCOMPARE(m_client->LiveHandleCount(), 0);
        m_client.reset();
        m_engine.reset();
    }
};
