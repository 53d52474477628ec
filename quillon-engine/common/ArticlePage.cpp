#include "ArticlePage.h"

#include <QList>
#include <QLocale>

#include <algorithm>
#include <utility>

namespace quillon {

namespace {

using Fills = QList<std::pair<QString, QString>>;

// In the order the in-order pass replaces them.
Fills fillsOf(const ArticlePageValues &v)
{
    const bool noBlocks = v.source.isEmpty() && v.comments.isEmpty() && v.enclosure.isEmpty();
    return {
        {QStringLiteral("~COMMENT_NOMARKASREAD_START~"), QString()},
        {QStringLiteral("~COMMENT_NOMARKASREAD_END~"), QString()},
        {QStringLiteral("~DATA_DBID~"), v.idText},
        {QStringLiteral("~DATA_AD~"), QString()},
        {QStringLiteral("~DATA_LOCALPATH~"), v.localPath},
        {QStringLiteral("~DATA_ARTICLETITLE~"), v.title},
        {QStringLiteral("~DATA_ARTICLEBODY~"), v.body},
        {QStringLiteral("~DATA_ARTICLEURL~"), v.url},
        {QStringLiteral("~DATA_HOSTTITLE~"), v.hostTitle},
        {QStringLiteral("~DATA_HOSTURL~"), v.hostUrl},
        {QStringLiteral("~DATA_SOURCE~"), v.source},
        {QStringLiteral("~DATA_COMMENTS~"), v.comments},
        {QStringLiteral("~DATA_ENCLOSURE~"), v.enclosure},
        {QStringLiteral("~COMMENT_NOENCLOSURES_START~"), noBlocks ? QStringLiteral("<!--") : QString()},
        {QStringLiteral("~COMMENT_NOENCLOSURES_END~"), noBlocks ? QStringLiteral("-->") : QString()},
        {QStringLiteral("~DATA_ARTICLEDATE~"), v.date},
        {QStringLiteral("~DATA_ARTICLETIME~"), QString()},
        {QStringLiteral("~DATA_DEBUG~"), QString()},
        {QStringLiteral("~DATA_HIDDEN~"), v.hidden},
        {QStringLiteral("~DATA_TEST~"), QString()},
        {QStringLiteral("~DATA_ARTICLEAUTHOR~"), v.author},
    };
}

QString fillInOrder(QString page, const Fills &fills)
{
    for (const auto &[placeholder, value] : fills)
        page.replace(placeholder, value, Qt::CaseInsensitive);
    return page;
}

bool isPlaceholderChar(QChar c)
{
    const char16_t u = c.unicode() | 0x20; // lower case
    return (u >= u'a' && u <= u'z') || c == u'_';
}

// Every "~NAME~" replaced in one scan of the template, so text a value brings is never filled.
QString fillOnce(const QString &page, const Fills &fills)
{
    const QStringView view(page);
    QString out;
    out.reserve(page.size() + 1024);
    qsizetype last = 0;
    for (qsizetype open = view.indexOf(u'~'); open >= 0; open = view.indexOf(u'~', open + 1)) {
        qsizetype close = open + 1;
        while (close < view.size() && isPlaceholderChar(view[close]))
            ++close;
        if (close == open + 1 || close == view.size() || view[close] != u'~')
            continue;
        out += view.sliced(last, open - last);
        last = close + 1;
        const QString name = view.sliced(open, last - open).toString().toUpper();
        const auto fill =
            std::find_if(fills.cbegin(), fills.cend(), [&name](const auto &f) { return f.first == name; });
        out += fill != fills.cend() ? fill->second : QString();
        open = close;
    }
    out += view.sliced(last);
    return out;
}

} // namespace

QString ArticlePage::fill(const QString &pageTemplate, const ArticlePageValues &values, Pass pass)
{
    const Fills fills = fillsOf(values);
    return pass == Pass::InOrder ? fillInOrder(pageTemplate, fills) : fillOnce(pageTemplate, fills);
}

QString ArticlePage::dateText(const QDateTime &date)
{
    return date.isValid() ? QLocale::c().toString(date.toUTC(), QStringLiteral("d MMM yyyy HH:mm 'UTC'"))
                          : QString();
}

QString ArticlePage::enclosureDetail(const QString &type, qint64 length)
{
    QStringList parts;
    if (!type.trimmed().isEmpty())
        parts << type.trimmed();
    if (length > 0)
        parts << QStringLiteral("%1 KB").arg((length + 1023) / 1024);
    return parts.join(QStringLiteral(", "));
}

} // namespace quillon
