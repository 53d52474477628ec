#include "KeyedCollection.h"

#include "PropertyBag.h"

qint32 KeyedCollection::Item(const QString &key) const
{
    return m_items.value(key.toCaseFolded(), quillon::kMissing);
}
