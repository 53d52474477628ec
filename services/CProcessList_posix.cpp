#include "CProcessList.h"

#include <signal.h>

// What Linux and macOS share: no Windows version to report, and termination by signal.

bool CProcessList::Terminate(qint64 pid)
{
    return pid > 0 && ::kill(pid_t(pid), SIGKILL) == 0;
}

qint32 CProcessList::GetVersion()
{
    return 0;
}

bool CProcessList::IsWin98()
{
    return false;
}

bool CProcessList::IsWin2000()
{
    return false;
}
