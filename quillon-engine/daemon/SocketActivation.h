#pragma once

#include <QtGlobal>

namespace quillon {

// The listening socket a service manager opened for the engine (systemd's socket units,
// systemd-socket-activate), or -1 when the engine was started without one and listens itself.
// Takes the hand-over variables out of the environment, so no child inherits them.
qintptr ActivatedSocket();

} // namespace quillon
