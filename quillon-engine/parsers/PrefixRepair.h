#pragma once

#include <QString>

namespace quillon {

// Feeds often use a namespace prefix (itunes:, media:) without declaring it, which a strict
// namespace-aware reader refuses. This declares each such prefix on the root element: the
// well-known namespace for the common ones, a private one for the rest.
class PrefixRepair
{
public:
    // Returns the number of prefixes declared; the text is changed only when that is above 0.
    static int declareMissing(QString &text);
};

} // namespace quillon
