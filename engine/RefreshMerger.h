#pragma once

#include <QtGlobal>

// Holds display refreshes back while the window itself changes the engine, and merges a burst
// of engine messages into one refresh. A pending refresh is carried out at the second flush
// after it was asked for, never the first: that one-pass delay lets a burst end in one refresh.
class RefreshMerger
{
public:
    enum class Action { None, Refresh };

    void SetIgnoreMessages(bool ignore) { m_ignore = ignore; }
    [[nodiscard]] bool IgnoringMessages() const { return m_ignore; }

    // Refresh at once (returns Refresh) or mark one pending, remembering what to select.
    Action MaybeRefresh(qint32 selectId = -1);
    // One pass of the flush step run from the main loop.
    Action Flush();
    void QueueAnUpdate() { ++m_countdown; }

    // What to select after a held-back refresh; -1 when none. Taking it clears it.
    [[nodiscard]] qint32 TakePendingSelection();
    [[nodiscard]] bool RefreshPending() const { return m_pending; }
    [[nodiscard]] qint32 Countdown() const { return m_countdown; }

private:
    void ClearPending();

    bool m_ignore = false;
    bool m_pending = false;
    bool m_waitMarker = false;
    qint32 m_pendingSelection = -1;
    qint32 m_countdown = 0;
};
