#pragma once

#include "OpmlOutline.h"
#include "PropertyBag.h"

#include <QUrl>

namespace quillon {

// Outline trees as consumers read them: one bag per outline with the attributes it has
// ("title", "text", "description", "xmlUrl", "htmlUrl", "type", "url", "category") and, when it
// has any, "children" (a list of such bags). Relative addresses are resolved against base.
class OutlineBags
{
public:
    [[nodiscard]] static ListPtr tree(const QList<OpmlOutline> &outlines, const QUrl &base = {});
    // The feeds alone, depth first, without folders.
    [[nodiscard]] static ListPtr feeds(const QList<OpmlOutline> &outlines, const QUrl &base = {});

private:
    [[nodiscard]] static BagPtr bag(const OpmlOutline &outline, const QUrl &base);
    static void collectFeeds(const QList<OpmlOutline> &outlines, const QUrl &base, PropertyList &into);
    [[nodiscard]] static QString resolved(const QString &address, const QUrl &base);
    [[nodiscard]] static bool isWebAddress(const QString &address);
};

} // namespace quillon
