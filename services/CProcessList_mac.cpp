#include "CProcessList.h"

#include <libproc.h>

#include <vector>

QList<CProcessList::Entry> CProcessList::ReadProcesses()
{
    QList<Entry> entries;
    const int bytes = proc_listpids(PROC_ALL_PIDS, 0, nullptr, 0);
    if (bytes <= 0)
        return entries;
    std::vector<pid_t> pids(size_t(bytes) / sizeof(pid_t) + 16);
    const int filled = proc_listpids(PROC_ALL_PIDS, 0, pids.data(), int(pids.size() * sizeof(pid_t)));
    for (int i = 0; i < filled / int(sizeof(pid_t)); ++i) {
        if (pids[size_t(i)] <= 0)
            continue;
        char path[PROC_PIDPATHINFO_MAXSIZE] = {};
        proc_pidpath(pids[size_t(i)], path, sizeof(path));
        entries.append({pids[size_t(i)], QString::fromUtf8(path)});
    }
    return entries;
}
