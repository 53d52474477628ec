#pragma once

#include "SecretKeyring.h"

#include <memory>

namespace quillon {

// The desktop's keyring (the Secret Service, or KDE's wallet) when the session runs one and
// QUILLON_ENGINE_SECRETS is not "file"; otherwise nothing, and passwords stay in the engine's
// private database.
std::unique_ptr<SecretKeyring> desktopKeyring();

} // namespace quillon
