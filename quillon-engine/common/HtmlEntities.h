#pragma once

#include <QStringView>

namespace quillon {

// The named character references of HTML 4 (and &apos;), which feeds use freely without
// declaring them.
class HtmlEntities
{
public:
    // The code point the name stands for, or 0 when it is not an HTML entity.
    [[nodiscard]] static char32_t codePoint(QStringView name);
};

} // namespace quillon
