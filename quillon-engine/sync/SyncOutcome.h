#pragma once

#include <QString>

namespace quillon {

// How a synchronisation run ended, in the words the online page shows.
struct SyncOutcome
{
    enum class Kind { Synchronised, WrongLogin, ApiOff, NoApi, Unreachable, Failed, SwitchedOff };

    Kind kind = Kind::Synchronised;
    // The server's own words, when it gave a reason.
    QString serverMessage;

    [[nodiscard]] QString text() const;
    [[nodiscard]] bool ok() const { return kind == Kind::Synchronised; }
};

} // namespace quillon
