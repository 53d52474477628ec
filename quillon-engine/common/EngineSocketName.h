#pragma once

#include <QString>

namespace quillon {

// The local socket name of this user's engine: QUILLON_ENGINE_SOCKET when set (tests), else a
// name made from the user's account so that each user reaches only their own engine.
QString EngineSocketName();

} // namespace quillon
