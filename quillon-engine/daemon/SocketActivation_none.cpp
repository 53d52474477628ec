#include "SocketActivation.h"

namespace quillon {

qintptr ActivatedSocket()
{
    return -1;
}

} // namespace quillon
