#include "TerminationSignal.h"

#include <QMetaObject>
#include <QPointer>

#include <atomic>

#include <windows.h>

namespace quillon {

namespace {
QPointer<TerminationSignal> s_instance;
std::atomic<bool> s_finished{false};

// Runs on a thread of its own: hand the request to the event loop and, for a closing console,
// wait a little, since Windows ends the process as soon as this returns.
BOOL WINAPI onConsoleEvent(DWORD event)
{
    if (!s_instance)
        return FALSE;
    TerminationSignal *target = s_instance.data();
    QMetaObject::invokeMethod(
        target, [target]() { Q_EMIT target->requested(); }, Qt::QueuedConnection);
    if (event == CTRL_CLOSE_EVENT || event == CTRL_LOGOFF_EVENT || event == CTRL_SHUTDOWN_EVENT) {
        for (int waited = 0; waited < 4000 && !s_finished; waited += 50)
            ::Sleep(50);
    }
    return TRUE;
}
} // namespace

TerminationSignal::TerminationSignal(QObject *parent) : QObject(parent)
{
    s_instance = this;
    s_finished = false;
    ::SetConsoleCtrlHandler(onConsoleEvent, TRUE);
}

TerminationSignal::~TerminationSignal()
{
    ::SetConsoleCtrlHandler(onConsoleEvent, FALSE);
    s_finished = true;
}

} // namespace quillon
