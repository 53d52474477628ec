#include "HtmlSafetyRules.h"

#include <QVarLengthArray>

#include <algorithm>
#include <array>
#include <optional>

namespace quillon::HtmlSafety {

namespace {

// Views, so a comparison looks at the length before any character.
constexpr QStringView kVoidElements[] = {u"area",  u"base", u"br",   u"col",   u"embed",  u"hr",    u"img",
                                         u"input", u"link", u"meta", u"param", u"source", u"track", u"wbr"};

constexpr QStringView kUriAttributes[] = {u"background", u"cite", u"href",  u"longdesc",
                                          u"poster",     u"src",  u"usemap"};

// What an article may keep: text structure, links, images and media, tables. Anything else
// (frames, objects, embeds, forms, scripts, SVG, MathML) loses its tag, and the elements below
// lose their content too.
constexpr QStringView kAllowedElements[] = {
    u"a",       u"abbr",    u"acronym",  u"address",    u"article", u"aside",   u"audio",  u"b",
    u"bdi",     u"bdo",     u"big",      u"blockquote", u"br",      u"caption", u"center", u"cite",
    u"code",    u"col",     u"colgroup", u"dd",         u"del",     u"details", u"dfn",    u"div",
    u"dl",      u"dt",      u"em",       u"figcaption", u"figure",  u"font",    u"footer", u"h1",
    u"h2",      u"h3",      u"h4",       u"h5",         u"h6",      u"header",  u"hr",     u"i",
    u"img",     u"ins",     u"kbd",      u"li",         u"main",    u"mark",    u"nobr",   u"ol",
    u"p",       u"picture", u"pre",      u"q",          u"rp",      u"rt",      u"ruby",   u"s",
    u"samp",    u"section", u"small",    u"source",     u"span",    u"strike",  u"strong", u"sub",
    u"summary", u"sup",     u"table",    u"tbody",      u"td",      u"tfoot",   u"th",     u"thead",
    u"time",    u"tr",      u"track",    u"tt",         u"u",       u"ul",      u"var",    u"video",
    u"wbr"};

constexpr QStringView kDroppedWithContent[] = {
    u"applet", u"embed",  u"frame",  u"frameset", u"head", u"iframe",   u"math",     u"noembed",
    u"object", u"script", u"select", u"style",    u"svg",  u"template", u"textarea", u"title"};

constexpr QStringView kAllowedAttributes[] = {
    u"abbr",        u"align",       u"alt",     u"axis",    u"background", u"bgcolor", u"border",
    u"cellpadding", u"cellspacing", u"char",    u"charoff", u"cite",       u"class",   u"clear",
    u"color",       u"cols",        u"colspan", u"compact", u"controls",   u"coords",  u"datetime",
    u"dir",         u"face",        u"frame",   u"headers", u"height",     u"href",    u"hreflang",
    u"hspace",      u"kind",        u"label",   u"lang",    u"longdesc",   u"loop",    u"media",
    u"muted",       u"name",        u"nowrap",  u"open",    u"poster",     u"preload", u"rel",
    u"rev",         u"reversed",    u"rows",    u"rowspan", u"rules",      u"scope",   u"shape",
    u"size",        u"span",        u"src",     u"srclang", u"start",      u"style",   u"summary",
    u"target",      u"title",       u"type",    u"usemap",  u"valign",     u"value",   u"vspace",
    u"width",       u"xml:lang"};

constexpr QStringView kAllowedSchemes[] = {u"http", u"https", u"mailto", u"ftp", u"news", u"nntp", u"feed"};

// Words that make a style able to run or fetch something, or hide such a word from this check.
constexpr QStringView kUnsafeStyle[] = {u"\\",       u"/*",      u"expression", u"javascript",
                                        u"vbscript", u"data:",   u"url(",       u"image(",
                                        u"behavior", u"binding", u"@import",    u"&#"};

// Every tag and attribute is looked up in these tables, and Qt's string hash cost more than
// the rest of a tag's handling. Empty for a name no table can hold: empty, longer than 16
// characters, or not ASCII.
std::optional<PackedName> pack(QStringView name)
{
    if (name.isEmpty() || name.size() > 16)
        return std::nullopt;
    PackedName packed;
    for (qsizetype i = 0; i < name.size(); ++i) {
        const char16_t c = name[i].unicode();
        if (c == 0 || c >= 0x80)
            return std::nullopt;
        packed.set(i, c);
    }
    return packed;
}

// A fixed set of names, each with a value; a name not in it reads as 0.
template <int Bits> class NameTable
{
public:
    void add(QStringView name, quint8 value)
    {
        const PackedName key = *pack(name);
        size_t i = hash(key);
        while (m_slots[i].value != 0 && !(m_slots[i].key == key))
            i = (i + 1) % kSize;
        m_slots[i].key = key;
        m_slots[i].value |= value;
    }
    [[nodiscard]] quint8 value(QStringView name) const
    {
        const auto key = pack(name);
        return key ? value(*key) : 0;
    }
    [[nodiscard]] quint8 value(const PackedName &key) const
    {
        for (size_t i = hash(key); m_slots[i].value != 0; i = (i + 1) % kSize) {
            if (m_slots[i].key == key)
                return m_slots[i].value;
        }
        return 0;
    }

private:
    static constexpr size_t kSize = size_t(1) << Bits;
    struct Slot
    {
        PackedName key;
        quint8 value = 0;
    };
    static size_t hash(const PackedName &key)
    {
        return size_t(((key.low ^ (key.high * 0x9E3779B97F4A7C15ULL)) * 0xFF51AFD7ED558CCDULL) >>
                      (64 - Bits));
    }
    std::array<Slot, kSize> m_slots{};
};

template <const auto &Set> bool isOneOf(QStringView name)
{
    static const NameTable<8> names = [] {
        NameTable<8> table;
        for (const QStringView entry : Set)
            table.add(entry, 1);
        return table;
    }();
    return names.value(name) != 0;
}

// A link's scheme as a browser reads it (blanks and controls ignored, any case), kept off the
// heap: every link is checked. Empty for a relative address.
QVarLengthArray<char16_t, 16> schemeOf(QStringView value)
{
    QVarLengthArray<char16_t, 16> scheme;
    for (const QChar c : value) {
        if (c.isSpace() || c.unicode() < 0x20)
            continue;
        if (c == u':')
            return scheme;
        if (c == u'/' || c == u'?' || c == u'#')
            break;
        scheme.append(c.toLower().unicode());
    }
    return {};
}

// Built before main rather than on first use: a tag's look-up pays no guard.
const NameTable<8> kElementKinds = [] {
    NameTable<8> table;
    for (const QStringView element : kAllowedElements)
        table.add(element, Allowed);
    for (const QStringView element : kVoidElements)
        table.add(element, Void);
    for (const QStringView element : kDroppedWithContent)
        table.add(element, DroppedWithContent);
    return table;
}();

} // namespace

quint8 elementKind(QStringView name)
{
    return kElementKinds.value(name);
}

quint8 elementKind(const PackedName &name)
{
    return kElementKinds.value(name);
}

bool isUriAttribute(QStringView name)
{
    return isOneOf<kUriAttributes>(name);
}

bool isAllowedAttribute(QStringView name)
{
    return isOneOf<kAllowedAttributes>(name);
}

bool isSafeUri(QStringView value)
{
    const auto scheme = schemeOf(value);
    return scheme.isEmpty() || isOneOf<kAllowedSchemes>(QStringView(scheme.data(), scheme.size()));
}

bool isSafeStyle(QStringView value)
{
    return std::none_of(std::begin(kUnsafeStyle), std::end(kUnsafeStyle),
                        [value](QStringView word) { return value.contains(word, Qt::CaseInsensitive); });
}

} // namespace quillon::HtmlSafety
