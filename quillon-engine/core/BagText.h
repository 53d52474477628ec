#pragma once

#include "PropertyBag.h"

#include <QString>

namespace quillon {

// Renders a bag as one line: a search ("guid" and "keywords") as "search?" and a URL query,
// anything else as "bag?" and the same query. Entries keep the bag's order.
class BagText
{
public:
    // Throws EngineError for a nested bag or list, which has no text form.
    [[nodiscard]] static QString render(const PropertyBag &bag);
};

} // namespace quillon
