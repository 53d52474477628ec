#pragma once

#include <QtGlobal>

namespace quillon {

// True when the process at the other end of a connected local socket runs as this user. Both
// ends ask before a byte of data passes, so neither a squatted name nor a stranger's connection
// gets through. Windows pipes are opened for the user only, so there it answers true.
[[nodiscard]] bool peerIsThisUser(qintptr socketDescriptor);

} // namespace quillon
