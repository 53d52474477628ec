#pragma once

#include "EngineCalls.h"
#include "PromptRecorder.h"
#include "TestEngine.h"

#include <QList>
#include <QObject>

// What the engine-backed dialog tests share: strings loaded, a fresh engine and a connected
// client per test, the questions asked, and no handle left behind.
class EngineDialogTest : public QObject
{
    Q_OBJECT

protected:
    std::unique_ptr<TestEngine> m_engine;
    quillon::SubscribeClientPtr m_client;
    std::unique_ptr<PromptRecorder> m_prompts;

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
};
