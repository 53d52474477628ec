#include "HandleTable.h"

#include "EngineError.h"

#include <limits>

namespace quillon {

Handle HandleTable::nextHandle()
{
    do {
        m_last = (m_last == std::numeric_limits<Handle>::max()) ? 1 : m_last + 1;
    } while (m_entries.contains(m_last));
    return m_last;
}

Handle HandleTable::addBag(BagPtr bag)
{
    if (!bag)
        return 0;
    const Handle h = nextHandle();
    m_entries.insert(h, std::move(bag));
    return h;
}

Handle HandleTable::addList(ListPtr list)
{
    if (!list)
        return 0;
    const Handle h = nextHandle();
    m_entries.insert(h, std::move(list));
    return h;
}

BagPtr HandleTable::bag(Handle handle) const
{
    const auto it = m_entries.constFind(handle);
    if (it == m_entries.cend())
        throw EngineError(QStringLiteral("Invalid bag handle %1").arg(handle));
    if (const auto *b = std::get_if<BagPtr>(&*it))
        return *b;
    throw EngineError(QStringLiteral("Handle %1 names a list, not a bag").arg(handle));
}

ListPtr HandleTable::list(Handle handle) const
{
    const auto it = m_entries.constFind(handle);
    if (it == m_entries.cend())
        throw EngineError(QStringLiteral("Invalid list handle %1").arg(handle));
    if (const auto *l = std::get_if<ListPtr>(&*it))
        return *l;
    throw EngineError(QStringLiteral("Handle %1 names a bag, not a list").arg(handle));
}

PropertyValue HandleTable::value(Handle handle) const
{
    const auto it = m_entries.constFind(handle);
    if (it == m_entries.cend())
        throw EngineError(QStringLiteral("Invalid handle %1").arg(handle));
    return std::visit([](const auto &v) { return PropertyValue(v); }, *it);
}

void HandleTable::release(Handle handle)
{
    if (!m_entries.remove(handle))
        throw EngineError(QStringLiteral("Handle %1 released twice or never issued").arg(handle));
}

} // namespace quillon
