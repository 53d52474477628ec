#pragma once

#include "EngineCalls.h"
#include "LocalSettings.h"
#include "PromptRecorder.h"
#include "TestEngine.h"
#include "localization.h"

#include <QObject>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

// The base of tests over a real engine: the program's own settings in a folder of the test's
// and its strings loaded, a fresh engine and a client connected as ConfigConsumer for each
// test function, the questions asked, and no handle left behind. A test that needs more calls
// these from its own slots of the same name. List this header in the test's sources so that
// it is moc'ed.
class EngineClientTest : public QObject
{
    Q_OBJECT

protected:
    QTemporaryDir m_settings;
    std::unique_ptr<TestEngine> m_engine;
    quillon::SubscribeClientPtr m_client;
    std::unique_ptr<PromptRecorder> m_prompts;

protected Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_settings.isValid());
        LocalSettings::SetBaseFolder(m_settings.path());
        LoadStrings(QuillonDataFolder());
    }
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
