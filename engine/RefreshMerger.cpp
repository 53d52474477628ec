#include "RefreshMerger.h"

RefreshMerger::Action RefreshMerger::MaybeRefresh(qint32 selectId)
{
    if (!m_ignore && !m_pending) {
        ClearPending();
        return Action::Refresh;
    }
    m_pending = true;
    m_waitMarker = true;
    if (selectId != -1)
        m_pendingSelection = selectId;
    return Action::None;
}

RefreshMerger::Action RefreshMerger::Flush()
{
    if (m_countdown > 0) {
        return --m_countdown == 0 ? Action::Refresh : Action::None;
    }
    if (m_ignore || !m_pending)
        return Action::None;
    if (m_waitMarker) {
        m_waitMarker = false;
        return Action::None;
    }
    m_pending = false;
    return Action::Refresh;
}

void RefreshMerger::ClearPending()
{
    m_pending = false;
    m_waitMarker = false;
    m_pendingSelection = -1;
}

qint32 RefreshMerger::TakePendingSelection()
{
    const qint32 id = m_pendingSelection;
    m_pendingSelection = -1;
    return id;
}
