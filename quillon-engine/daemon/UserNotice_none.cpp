#include "UserNotice.h"

namespace quillon {

// No notification service on this platform yet: the log line is all the user gets.
bool tellUser(const QString &, const QString &)
{
    return false;
}

} // namespace quillon
