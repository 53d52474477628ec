#include "PrefixRepair.h"

#include "TextSearch.h"

#include <QHash>
#include <QSet>
#include <QStringList>

namespace quillon {

namespace {

bool isNameStart(QChar c)
{
    return c.isLetter() || c == u'_';
}
bool isNameChar(QChar c)
{
    return c.isLetterOrNumber() || c == u'_' || c == u'-' || c == u'.';
}

QString knownNamespace(const QString &prefix)
{
    static const QHash<QString, QString> known = {
        {QStringLiteral("atom"), QStringLiteral("http://www.w3.org/2005/Atom")},
        {QStringLiteral("content"), QStringLiteral("http://purl.org/rss/1.0/modules/content/")},
        {QStringLiteral("dc"), QStringLiteral("http://purl.org/dc/elements/1.1/")},
        {QStringLiteral("dcterms"), QStringLiteral("http://purl.org/dc/terms/")},
        {QStringLiteral("itunes"), QStringLiteral("http://www.itunes.com/dtds/podcast-1.0.dtd")},
        {QStringLiteral("media"), QStringLiteral("http://search.yahoo.com/mrss/")},
        {QStringLiteral("slash"), QStringLiteral("http://purl.org/rss/1.0/modules/slash/")},
        {QStringLiteral("sy"), QStringLiteral("http://purl.org/rss/1.0/modules/syndication/")},
        {QStringLiteral("wfw"), QStringLiteral("http://wellformedweb.org/CommentAPI/")},
    };
    return known.value(prefix, QStringLiteral("urn:quillon:undeclared:") + prefix);
}

// The prefix of an element name starting at 'from', or an empty text when it has none.
QString prefixAt(const QString &text, qsizetype from)
{
    qsizetype i = from;
    if (i >= text.size() || !isNameStart(text.at(i)))
        return {};
    while (i < text.size() && isNameChar(text.at(i)))
        ++i;
    if (i + 1 < text.size() && text.at(i) == u':' && isNameStart(text.at(i + 1)))
        return text.mid(from, i - from);
    return {};
}

QSet<QString> usedElementPrefixes(const QString &text)
{
    QSet<QString> used;
    const QStringView view(text);
    for (qsizetype i = text.indexOf(u'<'); i >= 0; i = text.indexOf(u'<', i + 1)) {
        // Markup inside CDATA sections and comments names no elements: skip it whole.
        const QStringView rest = view.mid(i);
        const QStringView end = rest.startsWith(u"<![CDATA[") ? QStringView(u"]]>")
                                : rest.startsWith(u"<!--")    ? QStringView(u"-->")
                                                              : QStringView();
        if (!end.isEmpty()) {
            const qsizetype at = findTerminator(view, end, i);
            if (at < 0)
                break;
            i = at;
            continue;
        }
        const qsizetype name = (i + 1 < text.size() && text.at(i + 1) == u'/') ? i + 2 : i + 1;
        const QString prefix = prefixAt(text, name);
        if (!prefix.isEmpty())
            used.insert(prefix);
    }
    return used;
}

QSet<QString> declaredPrefixes(const QString &text)
{
    QSet<QString> declared{QStringLiteral("xml"), QStringLiteral("xmlns")};
    const QStringView marker = u"xmlns:";
    for (qsizetype i = findTerminator(text, marker, 0); i >= 0; i = findTerminator(text, marker, i + 1)) {
        qsizetype end = i + marker.size();
        while (end < text.size() && isNameChar(text.at(end)))
            ++end;
        declared.insert(text.mid(i + marker.size(), end - i - marker.size()));
    }
    return declared;
}

// Where the root element's start tag ends ('>' or "/>"), or -1 when there is none.
qsizetype rootTagEnd(const QString &text)
{
    qsizetype i = 0;
    for (;;) {
        i = text.indexOf(u'<', i);
        if (i < 0 || i + 1 >= text.size())
            return -1;
        if (text.at(i + 1) == u'?') {
            i = text.indexOf(QStringLiteral("?>"), i);
        } else if (text.mid(i, 4) == QLatin1String("<!--")) {
            i = text.indexOf(QStringLiteral("-->"), i);
        } else if (text.at(i + 1) == u'!') {
            // A document type declaration, with its internal subset in brackets.
            const qsizetype subset = text.indexOf(u'[', i);
            const qsizetype close = text.indexOf(u'>', i);
            i = (subset >= 0 && subset < close) ? text.indexOf(QStringLiteral("]>"), subset) : close;
        } else {
            break;
        }
        if (i < 0)
            return -1;
        ++i;
    }
    QChar quote;
    for (; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (!quote.isNull()) {
            if (c == quote)
                quote = QChar();
        } else if (c == u'"' || c == u'\'') {
            quote = c;
        } else if (c == u'>') {
            return (i > 0 && text.at(i - 1) == u'/') ? i - 1 : i;
        }
    }
    return -1;
}

} // namespace

int PrefixRepair::declareMissing(QString &text)
{
    const QSet<QString> used = usedElementPrefixes(text);
    if (used.isEmpty())
        return 0; // most feeds: no look for declarations needed
    QStringList missing = (used - declaredPrefixes(text)).values();
    if (missing.isEmpty())
        return 0;
    const qsizetype end = rootTagEnd(text);
    if (end < 0)
        return 0;
    missing.sort();
    QString declarations;
    for (const QString &prefix : missing)
        declarations += QStringLiteral(" xmlns:%1=\"%2\"").arg(prefix, knownNamespace(prefix));
    text.insert(end, declarations);
    return int(missing.size());
}

} // namespace quillon
