#pragma once

#include "SubscribeClient.h"

#include <QString>

#include <functional>

class frmMainWindow;
class QWidget;

// Start-up: the single-instance rule, the engine connection and the 2-second tick.
namespace MainModule {

void Main();
// True when the attempt failed (retry later), false when the engine client exists afterwards.
bool ConnectToEngine(const QString &consumerId);
void StartTickTimer(qint32 milliseconds);
void StopTickTimer();
void TickProc();

[[nodiscard]] bool RetryConnect();
[[nodiscard]] int TickTimerId();
// The main window, made on first use.
frmMainWindow *MainWindow();
// The first start's set-up over the main window (owner), with the real welcome dialog.
void RunFirstRunSetup(QWidget *owner);
// Opens the options window modal over host and returns when it is closed.
void OpenOptionsWindow(QWidget *host);
// Called each time Main shows the main window (the screenshot of the run script uses it).
void SetMainWindowShownHook(std::function<void(QWidget *)> hook);
// Forgets the process-wide state; for tests.
void Reset();

// Adds the subscriptions another feed reader ("newsgator", "intravnews", "newsboat", ...) holds.
void ImportFromReader(const quillon::SubscribeClientPtr &client, const QString &readerName);
qint32 &SkippedOutlineCount();

} // namespace MainModule
