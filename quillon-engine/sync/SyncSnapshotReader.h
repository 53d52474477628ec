#pragma once

#include "SyncTypes.h"

#include <QDeadlineTimer>
#include <QVariant>

namespace quillon {

class EngineDatabase;

// Reads what the engine holds when a run starts a page at a time, so clients are answered in
// between. The queue comes first: whatever changes while the rest is read is queued after it
// and so stays for the next run.
class SyncSnapshotReader
{
public:
    explicit SyncSnapshotReader(EngineDatabase &db) : m_db(db) {}

    // Reads pages until the deadline; true once the snapshot is whole or cannot be read.
    [[nodiscard]] bool readSome(const QDeadlineTimer &deadline);
    // Why the snapshot could not be read; empty when it was.
    [[nodiscard]] const QString &error() const { return m_error; }
    [[nodiscard]] SyncSnapshot take() { return std::move(m_snapshot); }

private:
    static constexpr int kPage = 50;

    // Each reads one page and answers whether it was the last.
    bool readQueue();
    bool readSubscriptions();
    bool readAgreed();

    EngineDatabase &m_db;
    SyncSnapshot m_snapshot;
    int m_step = 0;
    QVariant m_after; // where the next page starts
    QString m_error;
};

} // namespace quillon
