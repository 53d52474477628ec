#pragma once

#include "PropertyBag.h"

#include <QString>

namespace quillon {

// The class word that addresses subscriptions in every call.
inline const QString kNewsClass = QStringLiteral("NEWS");

inline bool isNewsClass(const QString &itemClass)
{
    return itemClass.compare(kNewsClass, Qt::CaseInsensitive) == 0;
}

// An id the engine hands out for a subscription: never zero, negative or the marker.
inline constexpr bool isValidId(qint32 id)
{
    return id > 0 && id != kMissing;
}

} // namespace quillon
