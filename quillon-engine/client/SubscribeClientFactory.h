#pragma once

#include "SubscribeClient.h"

#include <functional>

namespace quillon {

// Makes the engine client named by a ProgID. By default that is a client over the local
// socket of this user's engine daemon; tests and embedding programs may set another creator.
class SubscribeClientFactory
{
public:
    using Creator = std::function<SubscribeClientPtr()>;

    static inline const QString kProgId = QStringLiteral("QuillonClient2.SubscribeClient.1");

    // Throws EngineError when the ProgID is unknown or the engine cannot be reached.
    static SubscribeClientPtr Create(const QString &progId);
    // An empty creator restores the default.
    static void SetCreator(Creator creator);
};

} // namespace quillon
