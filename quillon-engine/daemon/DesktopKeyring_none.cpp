#include "DesktopKeyring.h"

namespace quillon {

std::unique_ptr<SecretKeyring> desktopKeyring()
{
    return nullptr;
}

} // namespace quillon
