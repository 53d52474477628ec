#include "CProcessList.h"

CProcessList::CProcessList()
{
    Refresh();
}

void CProcessList::Refresh()
{
    m_entries = ReadProcesses();
}

bool CProcessList::Matches(const Entry &entry, const QString &lowerName) const
{
    // An empty name would match entries whose path could not be read.
    if (lowerName.isEmpty())
        return false;
    const qsizetype cut =
        qMax(entry.path.lastIndexOf(QLatin1Char('/')), entry.path.lastIndexOf(QLatin1Char('\\')));
    return entry.path.mid(cut + 1).toLower() == lowerName;
}

bool CProcessList::IsProcessRunning(const QString &fileName) const
{
    const QString lowerName = fileName.toLower();
    for (const Entry &entry : m_entries) {
        if (Matches(entry, lowerName))
            return true;
    }
    return false;
}

bool CProcessList::ForceProcessTermination(const QString &fileName)
{
    const QString lowerName = fileName.toLower();
    bool ended = false;
    for (const Entry &entry : std::as_const(m_entries)) {
        if (Matches(entry, lowerName) && Terminate(entry.pid))
            ended = true;
    }
    return ended;
}
