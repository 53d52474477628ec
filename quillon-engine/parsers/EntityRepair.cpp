#include "EntityRepair.h"

#include "TextSearch.h"

#include "HtmlEntities.h"

#include <array>

namespace quillon {

namespace {

// ASCII characters the body scan must stop at: references, markup and forbidden controls.
constexpr auto kNeedsLook = [] {
    std::array<bool, 0x80> table{};
    for (char16_t c = 0; c < 0x20; ++c)
        table[c] = c != u'\t' && c != u'\n' && c != u'\r';
    table[u'&'] = true;
    table[u'<'] = true;
    return table;
}();

// One reference never counts for more than this: the reader refuses longer expansions anyway.
constexpr qint64 kExpansionCap = qint64(1) << 24;

bool isNameStart(QChar c)
{
    return c.isLetter() || c == u'_' || c == u':';
}

bool isNameChar(QChar c)
{
    return c.isLetterOrNumber() || c == u'_' || c == u':' || c == u'-' || c == u'.';
}

bool isXmlBuiltin(QStringView name)
{
    return name == u"amp" || name == u"lt" || name == u"gt" || name == u"quot" || name == u"apos";
}

bool isAllowedCodePoint(char32_t c)
{
    return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) || (c >= 0xE000 && c <= 0xFFFD) ||
           (c >= 0x10000 && c <= 0x10FFFF);
}

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

bool isHexDigit(QChar c)
{
    return isDigit(c) || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
}

bool isSpace(QChar c)
{
    return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r';
}

qsizetype skipSpace(const QString &s, qsizetype i)
{
    while (i < s.size() && isSpace(s[i]))
        ++i;
    return i;
}

qsizetype readName(const QString &s, qsizetype i)
{
    if (i >= s.size() || !isNameStart(s[i]))
        return i;
    ++i;
    while (i < s.size() && isNameChar(s[i]))
        ++i;
    return i;
}

// Past the end of a markup declaration, stepping over quoted literals; -1 when it never ends.
qsizetype skipDeclaration(const QString &s, qsizetype i)
{
    while (i < s.size()) {
        const QChar c = s[i];
        if (c == u'>')
            return i + 1;
        if (c == u'"' || c == u'\'') {
            const qsizetype close = s.indexOf(c, i + 1);
            if (close < 0)
                return -1;
            i = close;
        }
        ++i;
    }
    return -1;
}

} // namespace

EntityRepair::Result EntityRepair::repair(const QString &text)
{
    EntityRepair scanner(text);
    const qsizetype bodyStart = scanner.readDoctype();
    if (bodyStart < 0)
        return {text, 0, 0, true}; // its entities could not be sized, so it is not read at all
    scanner.scanBody(bodyStart);
    if (scanner.m_repairs == 0)
        return {text, scanner.m_repairs, scanner.m_expansion, false};
    scanner.m_out.append(QStringView(text).mid(scanner.m_copied));
    return {std::move(scanner.m_out), scanner.m_repairs, scanner.m_expansion, false};
}

qsizetype EntityRepair::skipPast(qsizetype from, QStringView terminator) const
{
    const qsizetype at = findTerminator(m_in, terminator, from);
    return at < 0 ? -1 : at + terminator.size();
}

bool EntityRepair::hasDoctype(const QString &text)
{
    return EntityRepair(text).doctypeStart() >= 0;
}

// Where the document type declaration starts, past the XML declaration, comments and
// processing instructions before it; -1 when there is none.
qsizetype EntityRepair::doctypeStart() const
{
    qsizetype i = 0;
    while (i < m_in.size()) {
        i = skipSpace(m_in, i);
        if (i < m_in.size() && m_in[i] == QChar(0xFEFF))
            ++i;
        else if (QStringView(m_in).mid(i).startsWith(u"<?"))
            i = skipPast(i, u"?>");
        else if (QStringView(m_in).mid(i).startsWith(u"<!--"))
            i = skipPast(i, u"-->");
        else
            break;
        if (i < 0)
            return -1;
    }
    return QStringView(m_in).mid(i).startsWith(u"<!DOCTYPE") ? i : -1;
}

// Where the body starts: after the document type declaration if there is one, else 0.
qsizetype EntityRepair::readDoctype()
{
    qsizetype i = doctypeStart();
    if (i < 0)
        return 0;
    for (i += 9; i < m_in.size(); ++i) {
        const QChar c = m_in[i];
        if (c == u'>')
            return i + 1;
        if (c == u'[')
            return readInternalSubset(i + 1);
        if (c == u'"' || c == u'\'') {
            i = m_in.indexOf(c, i + 1);
            if (i < 0)
                return -1;
        }
    }
    return -1;
}

qsizetype EntityRepair::readInternalSubset(qsizetype i)
{
    while (i >= 0 && i < m_in.size()) {
        i = skipSpace(m_in, i);
        const QStringView rest = QStringView(m_in).mid(i);
        if (rest.startsWith(u"]")) {
            const qsizetype close = m_in.indexOf(u'>', i);
            return close < 0 ? -1 : close + 1;
        }
        if (rest.startsWith(u"<!--"))
            i = skipPast(i, u"-->");
        else if (rest.startsWith(u"<!ENTITY"))
            i = readEntityDeclaration(i + 8);
        else if (rest.startsWith(u"<?"))
            i = skipPast(i, u"?>");
        else if (rest.startsWith(u"<!"))
            i = skipDeclaration(m_in, i + 2);
        else
            return -1; // includes parameter entity references, which could declare unseen entities
    }
    return -1;
}

qsizetype EntityRepair::readEntityDeclaration(qsizetype i)
{
    i = skipSpace(m_in, i);
    const bool parameter = i < m_in.size() && m_in[i] == u'%';
    if (parameter)
        i = skipSpace(m_in, i + 1);
    const qsizetype nameEnd = readName(m_in, i);
    const QString name = m_in.mid(i, nameEnd - i);
    i = skipSpace(m_in, nameEnd);
    if (!parameter && !name.isEmpty() && i < m_in.size() && (m_in[i] == u'"' || m_in[i] == u'\'')) {
        const qsizetype close = m_in.indexOf(m_in[i], i + 1);
        if (close < 0)
            return -1;
        if (!m_declared.contains(name)) // the first declaration binds
            m_declared.insert(name, m_in.mid(i + 1, close - i - 1));
        i = close + 1;
    } else if (!parameter && !name.isEmpty() && !m_declared.contains(name)) {
        m_declared.insert(name, QString()); // external: the reader does not fetch it
    }
    return skipDeclaration(m_in, i);
}

void EntityRepair::scanBody(qsizetype from)
{
    const qsizetype n = m_in.size();
    const char16_t *data = reinterpret_cast<const char16_t *>(m_in.constData());
    qsizetype i = from;
    while (i < n) {
        const char16_t c = data[i];
        if (c < 0x80 ? !kNeedsLook[c] : c < 0xFFFE) { // most characters need nothing

            ++i;
            continue;
        }
        if (c == u'&') {
            i = handleReference(i);
        } else if (c == u'<' && i + 1 < n && (data[i + 1] == u'!' || data[i + 1] == u'?')) {
            const qsizetype past = skipMarkupSection(i);
            if (past < 0)
                return; // unterminated: the reader will report it
            i = past;
        } else if ((c < 0x20 && c != u'\t' && c != u'\n' && c != u'\r') || c >= 0xFFFE) {
            replace(i, i + 1, {});
            ++i;
        } else {
            ++i;
        }
    }
}

// Past a CDATA section, comment or processing instruction starting at i; i + 1 for anything else.
qsizetype EntityRepair::skipMarkupSection(qsizetype i) const
{
    const QStringView rest = QStringView(m_in).mid(i);
    if (rest.startsWith(u"<![CDATA["))
        return skipPast(i + 9, u"]]>");
    if (rest.startsWith(u"<!--"))
        return skipPast(i + 4, u"-->");
    if (rest.startsWith(u"<?"))
        return skipPast(i + 2, u"?>");
    return i + 1;
}

// Returns the index after the reference (or after the '&' when it was no reference).
qsizetype EntityRepair::handleReference(qsizetype amp)
{
    if (amp + 1 < m_in.size() && m_in[amp + 1] == u'#')
        return handleCharacterReference(amp);
    const qsizetype nameEnd = readName(m_in, amp + 1);
    if (nameEnd == amp + 1 || nameEnd >= m_in.size() || m_in[nameEnd] != u';') {
        replace(amp, amp + 1, u"&amp;");
        return amp + 1;
    }
    const QStringView name = QStringView(m_in).mid(amp + 1, nameEnd - amp - 1);
    if (isXmlBuiltin(name))
        return nameEnd + 1;
    if (m_declared.contains(name.toString())) {
        m_expansion += expansionOf(name.toString(), 0);
        return nameEnd + 1;
    }
    if (const char32_t cp = HtmlEntities::codePoint(name))
        replace(amp, nameEnd + 1, QStringLiteral("&#%1;").arg(uint(cp)));
    else
        replace(amp, amp + 1, u"&amp;"); // unknown: keep it as literal text
    return nameEnd + 1;
}

qsizetype EntityRepair::handleCharacterReference(qsizetype amp)
{
    qsizetype i = amp + 2;
    const bool hex = i < m_in.size() && (m_in[i] == u'x');
    if (hex)
        ++i;
    const qsizetype digitsStart = i;
    while (i < m_in.size() && i - digitsStart < 9 && (hex ? isHexDigit(m_in[i]) : isDigit(m_in[i])))
        ++i;
    if (i == digitsStart || i >= m_in.size() || m_in[i] != u';') {
        replace(amp, amp + 1, u"&amp;");
        return amp + 1;
    }
    bool ok = false;
    const uint cp = QStringView(m_in).mid(digitsStart, i - digitsStart).toUInt(&ok, hex ? 16 : 10);
    if (!ok || !isAllowedCodePoint(cp))
        replace(amp, i + 1, u"&#xFFFD;");
    return i + 1;
}

qint64 EntityRepair::expansionOf(const QString &name, int depth)
{
    if (const auto known = m_expansionOf.constFind(name); known != m_expansionOf.constEnd())
        return known.value();
    if (depth > 32)
        return kExpansionCap; // nesting this deep is an attack or a cycle
    const QString value = m_declared.value(name);
    qint64 size = value.size();
    for (qsizetype at = value.indexOf(u'&'); at >= 0 && size < kExpansionCap;
         at = value.indexOf(u'&', at + 1)) {
        const qsizetype end = value.indexOf(u';', at);
        if (end < 0)
            break;
        const QString ref = value.mid(at + 1, end - at - 1);
        if (m_declared.contains(ref))
            size += expansionOf(ref, depth + 1) - (ref.size() + 2);
    }
    size = qMin(size, kExpansionCap);
    m_expansionOf.insert(name, size);
    return size;
}

void EntityRepair::replace(qsizetype from, qsizetype to, QStringView with)
{
    if (m_out.isNull())
        m_out.reserve(m_in.size() + m_in.size() / 16 + 16);
    m_out.append(QStringView(m_in).mid(m_copied, from - m_copied));
    m_out.append(with);
    m_copied = to;
    ++m_repairs;
}

} // namespace quillon
