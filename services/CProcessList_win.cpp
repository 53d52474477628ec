#include "CProcessList.h"

#include <windows.h>

#include <psapi.h>
#include <tlhelp32.h>
#include <versionhelpers.h>

#include <vector>

namespace {
QString modulePath(DWORD pid)
{
    const HANDLE process = OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, pid);
    if (!process)
        return QString();
    QString path;
    HMODULE firstModule = nullptr;
    DWORD needed = 0;
    if (EnumProcessModules(process, &firstModule, sizeof(firstModule), &needed)) {
        wchar_t buffer[MAX_PATH] = {};
        const DWORD length = GetModuleFileNameExW(process, firstModule, buffer, MAX_PATH);
        path = QString::fromWCharArray(buffer, int(length));
    }
    CloseHandle(process);
    return path;
}

QList<CProcessList::Entry> readByProcessStatus()
{
    QList<CProcessList::Entry> entries;
    std::vector<DWORD> pids(1024);
    DWORD bytes = 0;
    // Grow until the answer no longer fills the whole buffer.
    while (EnumProcesses(pids.data(), DWORD(pids.size() * sizeof(DWORD)), &bytes) &&
           bytes == pids.size() * sizeof(DWORD))
        pids.resize(pids.size() * 2);
    for (DWORD i = 0; i < bytes / sizeof(DWORD); ++i)
        entries.append({qint64(pids[i]), modulePath(pids[i])});
    return entries;
}

QList<CProcessList::Entry> readBySnapshot()
{
    QList<CProcessList::Entry> entries;
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (snapshot == INVALID_HANDLE_VALUE)
        return entries;
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof(entry);
    for (BOOL more = Process32FirstW(snapshot, &entry); more; more = Process32NextW(snapshot, &entry))
        entries.append({qint64(entry.th32ProcessID), QString::fromWCharArray(entry.szExeFile)});
    CloseHandle(snapshot);
    return entries;
}
} // namespace

QList<CProcessList::Entry> CProcessList::ReadProcesses()
{
    return GetVersion() == VER_PLATFORM_WIN32_NT ? readByProcessStatus() : readBySnapshot();
}

bool CProcessList::Terminate(qint64 pid)
{
    const HANDLE process = OpenProcess(PROCESS_TERMINATE, FALSE, DWORD(pid));
    if (!process)
        return false;
    const BOOL ended = TerminateProcess(process, 0);
    CloseHandle(process);
    return ended != FALSE;
}

// Every system this program runs on is of the NT family.
qint32 CProcessList::GetVersion()
{
    return VER_PLATFORM_WIN32_NT;
}

bool CProcessList::IsWin98()
{
    return false;
}

bool CProcessList::IsWin2000()
{
    return IsWindowsVersionOrGreater(5, 0, 0) && !IsWindowsXPOrGreater();
}
