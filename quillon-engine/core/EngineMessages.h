#pragma once

#include "PropertyBag.h"

#include <QString>

namespace quillon {

// The message bags the engine sends: MESSAGE names them, Result carries the payload.
class EngineMessages
{
public:
    [[nodiscard]] static BagPtr message(const QString &name, BagPtr result = PropertyBag::create());
    // A failed request: MESSAGE and ERROR, no Result.
    [[nodiscard]] static BagPtr failure(const QString &error);
    [[nodiscard]] static BagPtr bindingChanged(const QString &originator, const QString &consumerId,
                                               bool bound, qint32 subscriptionId);
    // SUBSCRIPTIONID, URL, TITLE and CATEGORY taken from a subscription's bag.
    [[nodiscard]] static BagPtr addedPayload(const PropertyBag &subscription);
};

} // namespace quillon
