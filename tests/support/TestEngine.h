#pragma once

#include "EngineCore.h"
#include "EngineLink.h"
#include "LinkedSubscribeClient.h"

#include <QTemporaryDir>

#include <functional>
#include <memory>
#include <optional>

// Sees each engine call of a client before the engine does: it may answer the call itself,
// throw EngineError as the engine would, or return nothing to let the call through. answer
// delivers a message to a callback the client registered, from the event loop.
struct CallHook
{
    using Answer = std::function<void(qint32 callbackId, const quillon::BagPtr &message)>;
    std::function<std::optional<quillon::PropertyValue>(
        const QString &operation, const QList<quillon::PropertyValue> &args, const Answer &answer)>
        see;
};

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
    std::shared_ptr<quillon::LinkedSubscribeClient> newClient(CallHook hook = {});

private:
    QTemporaryDir m_dir;
    std::unique_ptr<quillon::EngineCore> m_core;
    bool m_ready = false;
};
