#include "TestEngine.h"

#include "InProcessLink.h"
#include "LinkedSubscribeClient.h"

#include <QDebug>

TestEngine::TestEngine() : m_core(std::make_unique<quillon::EngineCore>(m_dir.path()))
{
    QString error;
    m_ready = m_dir.isValid() && m_core->open(&error);
    if (!m_ready)
        qWarning() << "test engine did not open:" << error;
}

TestEngine::~TestEngine() = default;

quillon::SubscribeClientPtr TestEngine::newClient()
{
    return quillon::LinkedSubscribeClient::create(std::make_unique<quillon::InProcessLink>(m_core.get()));
}
