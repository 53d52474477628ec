#include "ArticleText.h"

#include "HtmlEntities.h"

#include <QRegularExpression>

namespace quillon {

namespace {
char32_t numericReference(QStringView digits)
{
    bool ok = false;
    const uint value =
        digits.startsWith(u'x', Qt::CaseInsensitive) ? digits.mid(1).toUInt(&ok, 16) : digits.toUInt(&ok, 10);
    return ok && value > 0 && value <= 0x10FFFF ? char32_t(value) : 0;
}

// Whether simplified() would return the text as it is, as most titles are: then no copy is made.
bool isSimplified(QStringView text)
{
    bool afterSpace = true; // a space at the start is a run of its own
    for (const QChar c : text) {
        if (!c.isSpace()) {
            afterSpace = false;
        } else if (afterSpace || c != u' ') {
            return false;
        } else {
            afterSpace = true;
        }
    }
    return !afterSpace || text.isEmpty();
}
} // namespace

QString ArticleText::plain(const ParsedText &text)
{
    if (text.html)
        return stripHtml(text.value);
    return isSimplified(text.value) ? text.value : text.value.simplified();
}

QString ArticleText::html(const ParsedText &text)
{
    if (text.html)
        return text.value;
    QString escaped = text.value.toHtmlEscaped();
    escaped.replace(QLatin1Char('\n'), QLatin1String("<br />"));
    return escaped;
}

QString ArticleText::stripHtml(const QString &html)
{
    static const QRegularExpression tags(QStringLiteral("<[^>]*>"));
    QString text = html;
    text.replace(tags, QStringLiteral(" "));
    return decodeReferences(text).simplified();
}

QString ArticleText::decodeReferences(const QString &text)
{
    // Text between references is copied in pieces, and text without any is shared as it is:
    // a delivered message decodes every paragraph of its article.
    qsizetype at = text.indexOf(QLatin1Char('&'));
    if (at < 0)
        return text;
    QString out;
    out.reserve(text.size());
    qsizetype copied = 0;
    for (; at >= 0; at = text.indexOf(QLatin1Char('&'), at + 1)) {
        const qsizetype end = text.indexOf(QLatin1Char(';'), at);
        if (end < 0)
            break; // no later "&" has one either
        if (end - at > 12)
            continue;
        const QStringView name = QStringView(text).mid(at + 1, end - at - 1);
        const char32_t code =
            name.startsWith(u'#') ? numericReference(name.mid(1)) : HtmlEntities::codePoint(name);
        if (code == 0)
            continue;
        out += QStringView(text).sliced(copied, at - copied);
        out += QString::fromUcs4(&code, 1);
        copied = end + 1;
        at = end;
    }
    out += QStringView(text).sliced(copied);
    return out;
}

} // namespace quillon
