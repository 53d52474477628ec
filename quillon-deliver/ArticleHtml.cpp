#include "ArticleHtml.h"

#include "ArticlePage.h"
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
    quillon::ArticlePageValues values;
    values.idText = QString::number(article.articleId);
    values.title = article.subject.toHtmlEscaped();
    values.body = article.bodyHtml;
    values.url = attribute(article.link);
    values.hostTitle = article.feedTitle.toHtmlEscaped();
    values.hostUrl = attribute(article.feedUrl);
    values.enclosure = enclosures;
    values.date = date;
    // One pass, so an article that happens to contain a placeholder is never filled again.
    return quillon::ArticlePage::fill(m_template, values, quillon::ArticlePage::Pass::Once);
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
