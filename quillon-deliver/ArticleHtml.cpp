#include "ArticleHtml.h"

#include "ArticleText.h"

#include <QDir>
#include <QFile>
#include <QLocale>
#include <QRegularExpression>

namespace {
QString readText(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QString attribute(const QString &text)
{
    return text.toHtmlEscaped();
}
} // namespace

ArticleHtml::ArticleHtml(const QString &dataFolder)
{
    if (!dataFolder.isEmpty())
        m_template = readText(QDir(dataFolder).filePath(QStringLiteral("css/current/template.html")));
    if (m_template.trimmed().isEmpty()) {
        Q_INIT_RESOURCE(templates);
        m_template = readText(QStringLiteral(":/quillon/deliver/templates/article.html"));
    }
}

QString ArticleHtml::enclosureBlock(const ArticleMessage &article) const
{
    QString block;
    for (const ArticleMessage::Enclosure &e : article.enclosures) {
        const QString name = e.url.section(QLatin1Char('/'), -1).section(QLatin1Char('?'), 0, 0);
        QString detail = e.type;
        if (e.length > 0)
            detail += QStringLiteral(", %1 KB").arg((e.length + 1023) / 1024);
        block += QStringLiteral("<li><a href=\"%1\">%2</a> <small>%3</small></li>")
                     .arg(attribute(e.url), (name.isEmpty() ? e.url : name).toHtmlEscaped(),
                          detail.toHtmlEscaped());
    }
    return block;
}

QString ArticleHtml::page(const ArticleMessage &article) const
{
    const QString enclosures = enclosureBlock(article);
    const QString date =
        article.date.isValid()
            ? QLocale::c().toString(article.date.toUTC(), QStringLiteral("d MMM yyyy HH:mm 'UTC'"))
            : QString();
    const QList<std::pair<QString, QString>> fills = {
        {QStringLiteral("~COMMENT_NOMARKASREAD_START~"), QString()},
        {QStringLiteral("~COMMENT_NOMARKASREAD_END~"), QString()},
        {QStringLiteral("~DATA_DBID~"), QString::number(article.articleId)},
        {QStringLiteral("~DATA_AD~"), QString()},
        {QStringLiteral("~DATA_LOCALPATH~"), QString()},
        {QStringLiteral("~DATA_ARTICLETITLE~"), article.subject.toHtmlEscaped()},
        {QStringLiteral("~DATA_ARTICLEBODY~"), article.bodyHtml},
        {QStringLiteral("~DATA_ARTICLEURL~"), attribute(article.link)},
        {QStringLiteral("~DATA_HOSTTITLE~"), article.feedTitle.toHtmlEscaped()},
        {QStringLiteral("~DATA_HOSTURL~"), attribute(article.feedUrl)},
        {QStringLiteral("~DATA_SOURCE~"), QString()},
        {QStringLiteral("~DATA_COMMENTS~"), QString()},
        {QStringLiteral("~DATA_ENCLOSURE~"), enclosures},
        {QStringLiteral("~COMMENT_NOENCLOSURES_START~"),
         enclosures.isEmpty() ? QStringLiteral("<!--") : QString()},
        {QStringLiteral("~COMMENT_NOENCLOSURES_END~"),
         enclosures.isEmpty() ? QStringLiteral("-->") : QString()},
        {QStringLiteral("~DATA_ARTICLEDATE~"), date},
        {QStringLiteral("~DATA_ARTICLETIME~"), QString()},
        {QStringLiteral("~DATA_DEBUG~"), QString()},
        {QStringLiteral("~DATA_HIDDEN~"), QString()},
        {QStringLiteral("~DATA_TEST~"), QString()},
    };
    // One pass, so a value that happens to contain a placeholder is never filled again.
    static const QRegularExpression placeholder(QStringLiteral("~[A-Z_]+~"),
                                                QRegularExpression::CaseInsensitiveOption);
    QString out;
    out.reserve(m_template.size() + article.bodyHtml.size() + 256);
    qsizetype last = 0;
    for (auto it = placeholder.globalMatch(m_template); it.hasNext();) {
        const auto match = it.next();
        out += QStringView(m_template).mid(last, match.capturedStart() - last);
        last = match.capturedEnd();
        const QString name = match.captured().toUpper();
        const auto fill =
            std::find_if(fills.cbegin(), fills.cend(), [&name](const auto &f) { return f.first == name; });
        out += fill != fills.cend() ? fill->second : QString();
    }
    out += QStringView(m_template).mid(last);
    return out;
}

QString ArticleHtml::plainText(const QString &html)
{
    static const QRegularExpression blocks(
        QStringLiteral("<\\s*(br|/p|p|/div|/li|/h[1-6]|/tr|/blockquote|/pre)\\b[^>]*>"),
        QRegularExpression::CaseInsensitiveOption);
    QStringList paragraphs;
    for (const QString &chunk : html.split(blocks)) {
        const QString text = quillon::ArticleText::stripHtml(chunk);
        if (!text.isEmpty())
            paragraphs.append(text);
    }
    return paragraphs.join(QStringLiteral("\n\n"));
}
