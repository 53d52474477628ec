#pragma once

#include <QStringView>

// What an article's HTML may keep: which elements, attributes, link schemes and styles are safe.
namespace quillon::HtmlSafety {

enum ElementKind : quint8 { Allowed = 1, Void = 2, DroppedWithContent = 4 };

// A name of 1 to 16 ASCII characters packed into two words, one byte each: how the tables
// below hold their names, so that a look-up is a multiply and a compare or two.
struct PackedName
{
    quint64 low = 0;
    quint64 high = 0;
    bool operator==(const PackedName &) const = default;
    // Adds character `index` of the name; the caller keeps to 16 ASCII characters.
    void set(qsizetype index, char16_t c) { (index < 8 ? low : high) |= quint64(c) << (8 * (index % 8)); }
};

// What the element tables say of a lower-case name, in one look-up instead of one per table.
[[nodiscard]] quint8 elementKind(QStringView name);
[[nodiscard]] quint8 elementKind(const PackedName &name);
[[nodiscard]] bool isUriAttribute(QStringView name);
[[nodiscard]] bool isAllowedAttribute(QStringView name);
// Relative, or a web or mail scheme.
[[nodiscard]] bool isSafeUri(QStringView value);
// Cannot run or fetch anything.
[[nodiscard]] bool isSafeStyle(QStringView value);

} // namespace quillon::HtmlSafety
