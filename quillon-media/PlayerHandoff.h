#pragma once

#include <QString>

// Hands a downloaded file to a media player: "itunes" to a running MPRIS player (its OpenUri),
// else to the desktop's default application; "windowsmedia" to the desktop's default
// application at once.
class PlayerHandoff
{
public:
    static void open(const QString &file, const QString &app);

private:
    [[nodiscard]] static bool openInRunningPlayer(const QString &file);
    static void openWithDesktop(const QString &file);
};
