#pragma once

#include "SubscribeClient.h"

#include <QSize>
#include <QString>

// What the main window remembers between runs: its size, the details pane, the address
// column, and whether this user's first start has happened.
class MainWindowSettings
{
public:
    explicit MainWindowSettings(quillon::SubscribeClient &client) : m_client(client) {}

    // The remembered size; invalid when none was kept or it is too small to be meant.
    [[nodiscard]] QSize RememberedSize();
    [[nodiscard]] bool ShowDetails();
    [[nodiscard]] bool ShowUrlColumn();
    // A failure is logged: the window works on without it.
    void SaveSize(const QSize &size);
    void SaveView(const QString &key, bool value);

    // True the first time it is asked for this user.
    [[nodiscard]] static bool TakeFirstRun();
    static void MarkStartupComplete();

private:
    [[nodiscard]] QString Read(const QString &key, const QString &defaultValue);

    quillon::SubscribeClient &m_client;
};
