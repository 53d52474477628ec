#include "ArticlePage.h"

#include <QList>
#include <QLocale>
#include <QRegularExpression>

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

QString fillOnce(const QString &page, const Fills &fills)
{
    static const QRegularExpression placeholder(QStringLiteral("~[A-Z_]+~"),
                                                QRegularExpression::CaseInsensitiveOption);
    QString out;
    out.reserve(page.size() + 1024);
    qsizetype last = 0;
    for (auto it = placeholder.globalMatch(page); it.hasNext();) {
        const auto match = it.next();
        out += QStringView(page).mid(last, match.capturedStart() - last);
        last = match.capturedEnd();
        const QString name = match.captured().toUpper();
        const auto fill =
            std::find_if(fills.cbegin(), fills.cend(), [&name](const auto &f) { return f.first == name; });
        out += fill != fills.cend() ? fill->second : QString();
    }
    out += QStringView(page).mid(last);
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
