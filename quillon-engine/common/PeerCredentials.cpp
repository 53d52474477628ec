#include "PeerCredentials.h"

#ifdef Q_OS_UNIX
#include <sys/socket.h>
#include <sys/types.h>
#include <unistd.h>
#endif

namespace quillon {

bool peerIsThisUser(qintptr socketDescriptor)
{
#if defined(Q_OS_LINUX)
    struct ucred credentials
    {
    };
    socklen_t length = sizeof(credentials);
    if (::getsockopt(int(socketDescriptor), SOL_SOCKET, SO_PEERCRED, &credentials, &length) != 0)
        return false;
    return credentials.uid == ::getuid();
#elif defined(Q_OS_UNIX)
    uid_t uid = 0;
    gid_t gid = 0;
    if (::getpeereid(int(socketDescriptor), &uid, &gid) != 0)
        return false;
    return uid == ::getuid();
#else
    Q_UNUSED(socketDescriptor);
    return true;
#endif
}

} // namespace quillon
