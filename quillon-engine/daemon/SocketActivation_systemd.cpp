#include "SocketActivation.h"

#include <QLoggingCategory>

#include <systemd/sd-daemon.h>

#include <sys/socket.h>

Q_LOGGING_CATEGORY(lcActivation, "corvell.quillon.daemon.activation")

namespace quillon {

qintptr ActivatedSocket()
{
    const int count = sd_listen_fds(1);
    if (count <= 0)
        return -1;
    if (count > 1)
        qCWarning(lcActivation) << count << "sockets were passed; the engine serves the first only";
    // Anything but a listening stream socket on a path would leave every consumer unanswered.
    if (sd_is_socket_unix(SD_LISTEN_FDS_START, SOCK_STREAM, 1, nullptr, 0) <= 0) {
        qCWarning(lcActivation) << "the passed socket is no listening local stream socket; not used";
        return -1;
    }
    return SD_LISTEN_FDS_START;
}

} // namespace quillon
