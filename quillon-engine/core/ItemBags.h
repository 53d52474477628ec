#pragma once

#include "Article.h"
#include "ParsedFeed.h"
#include "PropertyBag.h"

namespace quillon {

// The bags articles travel in. An item holds "SUBJECT", "URL", "BODY", "AUTHOR", "DATE"
// (ISO-8601, UTC), "GUID" and "ENCLOSURES" (bags of "URL", "TYPE", "LENGTH" and "FILE" once downloaded);
// values a feed did not give are left out.
class ItemBags
{
public:
    [[nodiscard]] static BagPtr item(const Article &article);
    [[nodiscard]] static BagPtr enclosure(const ParsedEnclosure &enclosure);
    // "PREFLIGHT_DETAILS" of a preview: "URL", "TITLE", "DESCRIPTION", "LINK", "FORMAT",
    // "ITEMCOUNT", "ITEMS" and, for a feed read only in part, "ERROR".
    [[nodiscard]] static BagPtr previewDetails(const ParsedFeed &feed, const QString &url);
};

} // namespace quillon
