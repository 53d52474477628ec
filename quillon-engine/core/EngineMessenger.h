#pragma once

#include "PropertyBag.h"

#include <functional>

namespace quillon {

// How parts of the engine that answer later (fetches) send messages: during an operation
// they wait for its commit like everything else, afterwards they go at once.
struct EngineMessenger
{
    std::function<void(qint32 session, qint32 callbackId, BagPtr message)> toCallback;
    std::function<void(BagPtr message)> toConnected;
};

} // namespace quillon
