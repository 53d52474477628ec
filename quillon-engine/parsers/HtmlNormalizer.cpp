#include "HtmlNormalizer.h"

#include "HtmlEntities.h"
#include "HtmlSafetyRules.h"
#include "LinkResolver.h"

#include <algorithm>

namespace quillon {

using namespace HtmlSafety;

namespace {

bool isAsciiLetter(QChar c)
{
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

bool isHexDigit(QChar c)
{
    return isDigit(c) || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
}

bool isTagNameChar(QChar c)
{
    return isAsciiLetter(c) || isDigit(c) || c == u'-' || c == u':' || c == u'_';
}

bool isSpace(QChar c)
{
    return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r' || c == u'\f';
}

bool isValidAttributeName(QStringView name)
{
    if (name.isEmpty() || !(isAsciiLetter(name[0]) || name[0] == u'_' || name[0] == u':'))
        return false;
    return std::all_of(name.begin(), name.end(), [](QChar c) { return isTagNameChar(c) || c == u'.'; });
}

// Length of a character or entity reference starting at '&', or 0 when there is none.
qsizetype referenceLength(QStringView s, qsizetype amp, char32_t *codePoint = nullptr)
{
    qsizetype i = amp + 1;
    const bool numeric = i < s.size() && s[i] == u'#';
    const bool hex = numeric && i + 1 < s.size() && (s[i + 1] == u'x' || s[i + 1] == u'X');
    i += numeric ? (hex ? 2 : 1) : 0;
    const qsizetype start = i;
    while (i < s.size() && i - start < 10 &&
           (numeric ? (hex ? isHexDigit(s[i]) : isDigit(s[i])) : (isAsciiLetter(s[i]) || isDigit(s[i]))))
        ++i;
    if (i == start || i >= s.size() || s[i] != u';')
        return 0;
    const QStringView body = s.mid(start, i - start);
    char32_t cp = 0;
    if (numeric) {
        bool ok = false;
        cp = body.toUInt(&ok, hex ? 16 : 10);
        if (!ok || cp == 0 || cp > 0x10FFFF)
            return 0;
    } else {
        cp = HtmlEntities::codePoint(body);
        if (cp == 0)
            return 0;
    }
    if (codePoint)
        *codePoint = cp;
    return i + 1 - amp;
}

QString decodeReferences(QStringView s)
{
    if (!s.contains(u'&'))
        return s.toString();
    QString out;
    out.reserve(s.size());
    for (qsizetype i = 0; i < s.size(); ++i) {
        char32_t cp = 0;
        const qsizetype length = s[i] == u'&' ? referenceLength(s, i, &cp) : 0;
        if (length == 0) {
            out.append(s[i]);
            continue;
        }
        const char32_t units[] = {cp};
        out.append(QString::fromUcs4(units, 1));
        i += length - 1;
    }
    return out;
}

bool hasCapitals(QStringView name)
{
    return std::any_of(name.begin(), name.end(), [](QChar c) { return c >= u'A' && c <= u'Z'; });
}

// Names live no longer than the normalizer's run over its input, so a lower-case one is not
// copied: it refers to the input's characters.
QString lowerName(QStringView name)
{
    return hasCapitals(name) ? name.toString().toLower() : QString::fromRawData(name.data(), name.size());
}

} // namespace

QString HtmlNormalizer::normalize(QStringView html, const QUrl &base)
{
    return normalized(html, base, nullptr);
}

QString HtmlNormalizer::normalize(const QString &html, const QUrl &base)
{
    return normalized(html, base, &html);
}

// `whole`, when given, is `html` as a string of its own.
QString HtmlNormalizer::normalized(QStringView html, const QUrl &base, const QString *whole)
{
    HtmlNormalizer normalizer(html, base);
    normalizer.normalize();
    if (!normalizer.m_out.isNull())
        return normalizer.m_out.trimmed();
    // Already in its normal form, the common case. Never a null text: that would be stored as NULL.
    const QStringView trimmed = html.trimmed();
    if (whole && !whole->isNull() && trimmed.size() == whole->size())
        return *whole;
    return trimmed.isNull() ? QString(QLatin1String("")) : trimmed.toString();
}

// Text, references and tags already in their normal form are not copied one by one: the
// output takes the input up to the next piece that changes, in one go.
void HtmlNormalizer::normalize()
{
    // Each next place (the end when there is none) is kept until passed, so the input is
    // searched once for each character. '&' is rare and found by Qt's vectorised search; '<'
    // comes every few words, where a plain loop costs less than a call to that search.
    const qsizetype size = m_in.size();
    const auto nextAmpersand = [this, size](qsizetype from) {
        const qsizetype at = m_in.indexOf(u'&', from);
        return at < 0 ? size : at;
    };
    const auto nextLessThan = [this](qsizetype from) {
        return qsizetype(std::find(m_in.begin() + from, m_in.end(), QChar(u'<')) - m_in.begin());
    };
    qsizetype ampersand = nextAmpersand(0);
    qsizetype lessThan = nextLessThan(0);
    for (qsizetype i = 0; qMin(ampersand, lessThan) < size;) {
        i = ampersand < lessThan ? handleAmpersand(ampersand) : handleMarkup(lessThan);
        if (ampersand < i)
            ampersand = nextAmpersand(i);
        if (lessThan < i)
            lessThan = nextLessThan(i);
    }
    if (!m_out.isNull())
        m_out.append(m_in.mid(m_copied));
}

// The input from `from` to `to` does not reach the output as written; what replaces it is
// appended next.
void HtmlNormalizer::replace(qsizetype from, qsizetype to)
{
    if (m_out.isNull())
        m_out.reserve(m_in.size() + 16);
    m_out.append(m_in.mid(m_copied, from - m_copied));
    m_copied = to;
}

qsizetype HtmlNormalizer::drop(qsizetype from, qsizetype to)
{
    replace(from, to);
    return to;
}

qsizetype HtmlNormalizer::handleAmpersand(qsizetype i)
{
    const qsizetype length = referenceLength(m_in, i);
    if (length == 0) {
        replace(i, i + 1);
        m_out.append(u"&amp;");
        return i + 1;
    }
    return i + length;
}

qsizetype HtmlNormalizer::escapeLessThan(qsizetype i)
{
    replace(i, i + 1);
    m_out.append(u"&lt;");
    return i + 1;
}

qsizetype HtmlNormalizer::handleMarkup(qsizetype i)
{
    const QChar next = i + 1 < m_in.size() ? m_in[i + 1] : QChar();
    if (m_noMoreTags)
        return escapeLessThan(i);
    if (next == u'!')
        return handleDeclaration(i);
    if (next == u'/' && i + 2 < m_in.size() && isAsciiLetter(m_in[i + 2])) {
        const qsizetype end = plainTagEnd(i + 2);
        return end ? end : handleEndTag(i);
    }
    if (isAsciiLetter(next)) {
        const qsizetype end = plainTagEnd(i + 1);
        return end ? end : handleStartTag(i);
    }
    if (next == u'?') {
        const qsizetype close = m_in.indexOf(u'>', i);
        if (close >= 0)
            return drop(i, close + 1); // processing instructions mean nothing here
        m_noMoreTags = true;
        return escapeLessThan(i);
    }
    return escapeLessThan(i);
}

// Comments and declarations are dropped; an unfinished one at the end is left as text.
qsizetype HtmlNormalizer::handleDeclaration(qsizetype i)
{
    const QStringView rest = m_in.mid(i);
    if (rest.startsWith(u"<!--")) {
        const qsizetype close = m_in.indexOf(u"-->", i + 4);
        if (close >= 0)
            return drop(i, close + 3);
        m_noMoreTags = true;
        return escapeLessThan(i);
    }
    if (rest.size() < 3 || !isAsciiLetter(rest[2]))
        return escapeLessThan(i);
    const qsizetype close = m_in.indexOf(u'>', i);
    return close >= 0 ? drop(i, close + 1) : m_in.size(); // an unfinished one stays as written
}

qsizetype HtmlNormalizer::handleEndTag(qsizetype i)
{
    qsizetype nameEnd = i + 2;
    while (nameEnd < m_in.size() && isTagNameChar(m_in[nameEnd]))
        ++nameEnd;
    const qsizetype close = m_in.indexOf(u'>', nameEnd);
    if (close < 0) {
        m_noMoreTags = true;
        return escapeLessThan(i);
    }
    // "</p>" as it should be never comes here: plainTagEnd() took it.
    const QString name = lowerName(m_in.mid(i + 2, nameEnd - i - 2));
    const quint8 kind = elementKind(name);
    const bool kept = (kind & Allowed) && !(kind & Void);
    replace(i, close + 1);
    if (kept) {
        m_out.append(u"</");
        m_out.append(name);
        m_out.append(u'>');
    }
    return close + 1;
}

qsizetype HtmlNormalizer::handleStartTag(qsizetype i)
{
    Tag tag = readStartTag(i);
    if (tag.end < 0) {
        m_noMoreTags = true;
        return escapeLessThan(i);
    }
    tag.kind = elementKind(tag.name);
    if (tag.kind & DroppedWithContent) {
        // Gone with everything up to their end tag: code, frames, or text no reader should see.
        if (tag.selfClosing || (tag.kind & Void))
            return drop(i, tag.end);
        const qsizetype close = m_in.indexOf(QStringLiteral("</") + tag.name, tag.end, Qt::CaseInsensitive);
        const qsizetype past = close < 0 ? -1 : m_in.indexOf(u'>', close);
        return drop(i, past < 0 ? m_in.size() : past + 1);
    }
    if (!(tag.kind & Allowed))
        return drop(i, tag.end); // the tag goes, its text stays
    // Written in the form it is given, a tag with a link and all is not copied either.
    m_tag.truncate(0); // keeps what the last tag allocated
    m_tag.reserve(tag.end - i + 16);
    emitStartTag(tag, m_tag);
    if (m_in.mid(i, tag.end - i) == m_tag)
        return tag.end;
    replace(i, tag.end);
    m_out.append(m_tag);
    return tag.end;
}

// Where a tag such as "<p>" or "</p>" ends when it is kept just as written, as most tags in
// feeds are: the lower-case name of an allowed element that is not void, straight to '>'. The
// name starts at `name` and is packed as it is read. 0 for any other tag, which is read in full.
qsizetype HtmlNormalizer::plainTagEnd(qsizetype name) const
{
    const qsizetype limit = qMin(m_in.size(), name + 16); // the tables hold no longer name
    PackedName packed;
    qsizetype p = name;
    for (; p < limit; ++p) {
        const char16_t c = m_in[p].unicode();
        if (!((c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9')))
            break;
        packed.set(p - name, c);
    }
    if (p == name || p >= m_in.size() || m_in[p] != u'>')
        return 0;
    const quint8 kind = elementKind(packed);
    return (kind & Allowed) && !(kind & Void) ? p + 1 : 0;
}

HtmlNormalizer::Tag HtmlNormalizer::readStartTag(qsizetype i) const
{
    Tag tag;
    qsizetype p = i + 1;
    while (p < m_in.size() && isTagNameChar(m_in[p]))
        ++p;
    tag.name = lowerName(m_in.mid(i + 1, p - i - 1));
    while (p < m_in.size()) {
        while (p < m_in.size() && (isSpace(m_in[p]) || m_in[p] == u'/')) {
            if (m_in[p] == u'/' && p + 1 < m_in.size() && m_in[p + 1] == u'>')
                tag.selfClosing = true;
            ++p;
        }
        if (p >= m_in.size())
            break;
        if (m_in[p] == u'>') {
            tag.end = p + 1;
            return tag;
        }
        p = readAttribute(p, tag);
    }
    return tag;
}

// HTML's lenient attribute syntax: name, optional "=", a quoted or bare value.
qsizetype HtmlNormalizer::readAttribute(qsizetype p, Tag &tag) const
{
    const qsizetype nameStart = p;
    while (p < m_in.size() && !isSpace(m_in[p]) && m_in[p] != u'=' && m_in[p] != u'>' && m_in[p] != u'/')
        ++p;
    Attribute attribute{lowerName(m_in.mid(nameStart, qMax<qsizetype>(p - nameStart, 1))), {}};
    p = qMax(p, nameStart + 1);
    qsizetype q = p;
    while (q < m_in.size() && isSpace(m_in[q]))
        ++q;
    if (q < m_in.size() && m_in[q] == u'=') {
        ++q;
        while (q < m_in.size() && isSpace(m_in[q]))
            ++q;
        if (q < m_in.size() && (m_in[q] == u'"' || m_in[q] == u'\'')) {
            const qsizetype close = m_in.indexOf(m_in[q], q + 1);
            if (close < 0)
                return m_in.size();
            attribute.value = decodeReferences(m_in.mid(q + 1, close - q - 1));
            p = close + 1;
        } else {
            qsizetype end = q;
            while (end < m_in.size() && !isSpace(m_in[end]) && m_in[end] != u'>')
                ++end;
            attribute.value = decodeReferences(m_in.mid(q, end - q));
            p = end;
        }
    } else {
        attribute.value = attribute.name; // a bare flag such as "checked"
    }
    if (isValidAttributeName(attribute.name))
        tag.attributes.append(attribute);
    return p;
}

void HtmlNormalizer::emitStartTag(Tag &tag, QString &out) const
{
    if (tag.attributes.size() > 1)
        std::stable_sort(tag.attributes.begin(), tag.attributes.end(),
                         [](const Attribute &a, const Attribute &b) { return a.name < b.name; });
    out.append(u'<');
    out.append(tag.name);
    QStringView previous;
    for (Attribute &attribute : tag.attributes) {
        const bool uri = isUriAttribute(attribute.name);
        if (attribute.name == previous || !keepAttribute(attribute, uri))
            continue; // the first of duplicates wins, as in browsers
        previous = attribute.name;
        if (uri)
            attribute.value = resolved(attribute.value);
        out.append(u' ');
        out.append(attribute.name);
        out.append(u"=\"");
        appendEscaped(out, attribute.value);
        out.append(u'"');
    }
    if (tag.kind & Void) {
        out.append(u" />");
    } else if (tag.selfClosing) {
        out.append(u"></");
        out.append(tag.name);
        out.append(u'>');
    } else {
        out.append(u'>');
    }
}

bool HtmlNormalizer::keepAttribute(const Attribute &attribute, bool uri)
{
    if (!isAllowedAttribute(attribute.name))
        return false;
    if (attribute.name == u"style")
        return isSafeStyle(attribute.value);
    return !uri || isSafeUri(attribute.value);
}

QString HtmlNormalizer::resolved(const QString &uri) const
{
    return LinkResolver::resolve(m_base, uri);
}

void HtmlNormalizer::appendEscaped(QString &out, QStringView text)
{
    qsizetype runStart = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        // Letters sort after all four: one comparison for most characters.
        if (c > u'>' || (c != u'&' && c != u'<' && c != u'>' && c != u'"'))
            continue;
        out.append(text.mid(runStart, i - runStart));
        out.append(c == u'&' ? u"&amp;" : c == u'<' ? u"&lt;" : c == u'>' ? u"&gt;" : u"&quot;");
        runStart = i + 1;
    }
    out.append(text.mid(runStart));
}

} // namespace quillon
