#pragma once

#include <QList>
#include <QString>

// A snapshot of the running processes with their executable paths, taken when constructed
// (or on Refresh).
class CProcessList
{
public:
    struct Entry
    {
        qint64 pid = 0;
        QString path;
    };

    CProcessList();

    void Refresh();
    [[nodiscard]] int ProcessCount() const { return int(m_entries.size()); }
    // Case-insensitive match of fileName with the part of a path after its last separator.
    [[nodiscard]] bool IsProcessRunning(const QString &fileName) const;
    // Terminates every process whose executable matches; true when one was ended.
    bool ForceProcessTermination(const QString &fileName);
    // Windows platform id (1: 9x family, 2: NT family); 0 on other systems.
    [[nodiscard]] static qint32 GetVersion();
    [[nodiscard]] static bool IsWin98();
    [[nodiscard]] static bool IsWin2000();

    [[nodiscard]] const QList<Entry> &Entries() const { return m_entries; }

private:
    [[nodiscard]] bool Matches(const Entry &entry, const QString &lowerName) const;
    // Platform part.
    [[nodiscard]] static QList<Entry> ReadProcesses();
    static bool Terminate(qint64 pid);

    QList<Entry> m_entries;
};
