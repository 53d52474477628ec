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
} // namespace

QString ArticleText::plain(const ParsedText &text)
{
    return text.html ? stripHtml(text.value) : text.value.simplified();
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
    QString out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const qsizetype end = text.at(i) == QLatin1Char('&') ? text.indexOf(QLatin1Char(';'), i) : -1;
        if (end < 0 || end - i > 12) {
            out.append(text.at(i));
            continue;
        }
        const QStringView name = QStringView(text).mid(i + 1, end - i - 1);
        const char32_t code =
            name.startsWith(u'#') ? numericReference(name.mid(1)) : HtmlEntities::codePoint(name);
        if (code == 0) {
            out.append(text.at(i));
            continue;
        }
        out.append(QString::fromUcs4(&code, 1));
        i = end;
    }
    return out;
}

} // namespace quillon
