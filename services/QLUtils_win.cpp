#include "QLUtils.h"

#include <QWidget>

#include <windows.h>

bool ForceForegroundWindow(QWidget *window)
{
    if (!window)
        return false;
    const HWND hwnd = reinterpret_cast<HWND>(window->window()->winId());
    if (GetForegroundWindow() == hwnd)
        return true;
    const DWORD foregroundThread = GetWindowThreadProcessId(GetForegroundWindow(), nullptr);
    const DWORD windowThread = GetWindowThreadProcessId(hwnd, nullptr);
    BOOL succeeded = FALSE;
    // Windows only lets the thread owning the foreground take it over, so borrow its input.
    if (foregroundThread != windowThread) {
        AttachThreadInput(foregroundThread, windowThread, TRUE);
        succeeded = SetForegroundWindow(hwnd);
        AttachThreadInput(foregroundThread, windowThread, FALSE);
    } else {
        succeeded = SetForegroundWindow(hwnd);
    }
    ShowWindow(hwnd, IsIconic(hwnd) ? SW_RESTORE : SW_SHOW);
    SetWindowPos(hwnd, nullptr, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE);
    return succeeded != FALSE;
}
