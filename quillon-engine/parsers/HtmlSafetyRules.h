#pragma once

#include <QStringView>

// What an article's HTML may keep: which elements, attributes, link schemes and styles are safe.
namespace quillon::HtmlSafety {

enum ElementKind : quint8 { Allowed = 1, Void = 2, DroppedWithContent = 4 };

// What the element tables say of a lower-case name, in one look-up instead of one per table.
[[nodiscard]] quint8 elementKind(QStringView name);
[[nodiscard]] bool isUriAttribute(QStringView name);
[[nodiscard]] bool isAllowedAttribute(QStringView name);
// Relative, or a web or mail scheme.
[[nodiscard]] bool isSafeUri(QStringView value);
// Cannot run or fetch anything.
[[nodiscard]] bool isSafeStyle(QStringView value);

} // namespace quillon::HtmlSafety
