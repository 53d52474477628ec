#pragma once

#include "EngineCore.h"
#include "SubscribeClient.h"

#include <QTemporaryDir>

#include <memory>

// A real engine core on a temporary database, with clients on in-process links.
class TestEngine
{
public:
    TestEngine();
    ~TestEngine();

    [[nodiscard]] bool isReady() const { return m_ready; }
    [[nodiscard]] QString dataFolder() const { return m_dir.path(); }
    quillon::EngineCore &core() { return *m_core; }
    // A new client with its own session; not connected as a consumer yet.
    quillon::SubscribeClientPtr newClient();

private:
    QTemporaryDir m_dir;
    std::unique_ptr<quillon::EngineCore> m_core;
    bool m_ready = false;
};
