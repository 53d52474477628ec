#pragma once

#include <QString>

// An earlier instance of the program started by the same user is still running. The lock is
// taken by the first caller and held until the process ends.
class SingleInstance
{
public:
    [[nodiscard]] static bool AnotherInstanceRunning();
    // Where the lock lives: CONFIGCONSUMER_LOCK when set, else a file in the user's private runtime folder.
    [[nodiscard]] static QString LockPath();
    static void Release();
};
