#include "RemoteContent.h"

#include <QList>

#include <span>

namespace quillon {

namespace {

// A plain scan instead of regular expressions (a tenth of a delivered message's CPU). It finds
// what these would, with the same case rules:
//   tag:    <([A-Za-z][A-Za-z0-9]*)\b[^>]*>
//   remote: \s(src|poster|background)="([^"]*)"   (case-insensitive)
//   alt:    \salt="([^"]*)"                        (case-insensitive)

bool isBlank(QChar c)
{
    return c == u' ' || (c >= u'\t' && c <= u'\r');
}

bool isAsciiAlnum(QChar c)
{
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9');
}

// Lower case as a case-insensitive match sees it: the long s and the Kelvin sign count as "s" and "k".
char16_t folded(QChar c)
{
    if (c == u'\u017f')
        return u's';
    if (c == u'\u212a')
        return u'k';
    return c >= u'A' && c <= u'Z' ? c.unicode() | 0x20 : c.unicode();
}

// Whether text holds word (lower case, ASCII) at at.
bool wordAt(QStringView text, qsizetype at, QLatin1StringView word)
{
    if (at + word.size() > text.size())
        return false;
    for (qsizetype i = 0; i < word.size(); ++i) {
        if (folded(text[at + i]) != word[i].unicode())
            return false;
    }
    return true;
}

// The attribute name among names that follows the blank at at, or -1.
int nameAfterBlank(QStringView tag, qsizetype at, std::span<const QLatin1StringView> names)
{
    if (!isBlank(tag[at]))
        return -1;
    int index = 0;
    for (const QLatin1StringView name : names) {
        if (wordAt(tag, at + 1, name))
            return index;
        ++index;
    }
    return -1;
}

struct Attribute
{
    qsizetype start = 0; // the blank before the name
    qsizetype end = 0;   // after the closing quote
    int name = 0;        // index in the names looked for
    QStringView value;
};

// Every non-overlapping ` name="value"` of names in tag, from the left.
QList<Attribute> attributes(QStringView tag, std::span<const QLatin1StringView> names, bool firstOnly)
{
    QList<Attribute> found;
    for (qsizetype at = 0; at < tag.size(); ++at) {
        const int name = nameAfterBlank(tag, at, names);
        if (name < 0)
            continue;
        const qsizetype open = at + 1 + names[name].size();
        if (open + 1 >= tag.size() || tag[open] != u'=' || tag[open + 1] != u'"')
            continue;
        const qsizetype close = tag.indexOf(u'"', open + 2);
        if (close < 0)
            continue;
        found.append({at, close + 1, name, tag.sliced(open + 2, close - open - 2)});
        if (firstOnly)
            break;
        at = close;
    }
    return found;
}

constexpr QLatin1StringView kLoads[] = {QLatin1StringView("src"), QLatin1StringView("poster"),
                                        QLatin1StringView("background")};
constexpr QLatin1StringView kAlt[] = {QLatin1StringView("alt")};

bool loadsSomething(QStringView tag)
{
    for (qsizetype at = 0; at < tag.size(); ++at) {
        const int name = nameAfterBlank(tag, at, kLoads);
        const qsizetype equals = at + 1 + (name < 0 ? 0 : kLoads[name].size());
        if (name >= 0 && equals < tag.size() && tag[equals] == u'=')
            return true;
    }
    return false;
}

// The end of the start tag opened at at (after its ">"), -1 when none opens there, -2 when no
// ">" follows at all (so no later one can either).
qsizetype startTagEnd(QStringView html, qsizetype at, qsizetype *nameEnd)
{
    qsizetype i = at + 1;
    if (i >= html.size() || !isAsciiAlnum(html[i]) || html[i].isDigit())
        return -1;
    while (i < html.size() && isAsciiAlnum(html[i]))
        ++i;
    if (i < html.size() && html[i] == u'_')
        return -1;
    *nameEnd = i;
    const qsizetype close = html.indexOf(u'>', i);
    return close < 0 ? -2 : close + 1;
}

void appendLink(QString &out, QStringView address, QStringView text)
{
    out += QLatin1StringView("<a href=\"");
    out += address;
    out += QLatin1StringView("\">[");
    out += text;
    out += QLatin1StringView("]</a>");
}

// One start tag without what it would load.
void appendHeldBack(QString &out, QStringView tag, QStringView name)
{
    const QList<Attribute> remote = attributes(tag, kLoads, false);
    QStringView source;
    for (const Attribute &a : remote) {
        if (a.name == 0)
            source = a.value;
    }
    if (name.compare(QLatin1StringView("img"), Qt::CaseInsensitive) == 0) {
        const QList<Attribute> alt = attributes(tag, kAlt, true);
        const QStringView text = alt.isEmpty() ? QStringView() : alt.first().value;
        if (!source.isEmpty())
            appendLink(out, source, text.isEmpty() ? QStringView(u"image") : text);
        return;
    }
    if (!source.isEmpty())
        appendLink(out, source, name.toString().toLower());
    qsizetype kept = 0;
    for (const Attribute &a : remote) {
        out += tag.sliced(kept, a.start - kept);
        kept = a.end;
    }
    out += tag.sliced(kept);
}

} // namespace

QString RemoteContent::asLinks(const QString &html)
{
    const QStringView view(html);
    QString out;
    out.reserve(html.size());
    qsizetype last = 0;
    for (qsizetype at = view.indexOf(u'<'); at >= 0; at = view.indexOf(u'<', at + 1)) {
        qsizetype nameEnd = 0;
        const qsizetype end = startTagEnd(view, at, &nameEnd);
        if (end == -2)
            break;
        if (end < 0)
            continue;
        const QStringView tag = view.sliced(at, end - at);
        if (loadsSomething(tag)) {
            out += view.sliced(last, at - last);
            appendHeldBack(out, tag, view.sliced(at + 1, nameEnd - at - 1));
            last = end;
        }
        at = end - 1;
    }
    out += view.sliced(last);
    return out;
}

} // namespace quillon
