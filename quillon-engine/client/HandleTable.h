#pragma once

#include "ISubscribeClientCallback.h"
#include "PropertyBag.h"

#include <QHash>

#include <variant>

namespace quillon {

// The bags and lists a client has handed out, by handle. Handles are positive, never reused
// while live, and each is released once.
class HandleTable
{
public:
    Handle addBag(BagPtr bag);
    Handle addList(ListPtr list);
    // Throws EngineError for a handle that is not live or not of the asked kind.
    [[nodiscard]] BagPtr bag(Handle handle) const;
    [[nodiscard]] ListPtr list(Handle handle) const;
    [[nodiscard]] PropertyValue value(Handle handle) const;
    void release(Handle handle);
    [[nodiscard]] int liveCount() const { return int(m_entries.size()); }

private:
    Handle nextHandle();

    QHash<Handle, std::variant<BagPtr, ListPtr>> m_entries;
    Handle m_last = 0;
};

} // namespace quillon
