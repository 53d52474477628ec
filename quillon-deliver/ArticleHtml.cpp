#include "ArticleHtml.h"

#include "ArticlePage.h"
#include "ArticleText.h"
#include "HtmlNormalizer.h"
#include "RemoteContent.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QUrl>

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

// A link address for mail: only schemes a mail program opens harmlessly.
QString mailLink(const QString &address)
{
    static const QStringList allowed = {
        QStringLiteral("http"), QStringLiteral("https"), QStringLiteral("mailto"), QStringLiteral("ftp"),
        QStringLiteral("news"), QStringLiteral("nntp"),  QStringLiteral("feed")};
    return allowed.contains(QUrl(address.trimmed()).scheme().toLower()) ? attribute(address.trimmed())
                                                                        : QString();
}

// The article through the engine's allow-list; its remote content only when the reader asked
// for it, else as links: a mail program fetches those only under its own remote-content rule.
QString mailBody(const QString &html, bool showImages)
{
    const QString safe = quillon::HtmlNormalizer::normalize(html);
    return showImages ? safe : quillon::RemoteContent::asLinks(safe);
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
        const QString detail = quillon::ArticlePage::enclosureDetail(e.type, e.length);
        block += QStringLiteral("<li><a href=\"%1\">%2</a> <small>%3</small></li>")
                     .arg(mailLink(e.url), (name.isEmpty() ? e.url : name).toHtmlEscaped(),
                          detail.toHtmlEscaped());
    }
    return block;
}

QString ArticleHtml::page(const ArticleMessage &article) const
{
    const QString enclosures = enclosureBlock(article);
    quillon::ArticlePageValues values;
    values.idText = QString::number(article.articleId);
    values.title = article.subject.toHtmlEscaped();
    values.body = mailBody(article.bodyHtml, article.showImages);
    values.url = mailLink(article.link);
    values.hostTitle = article.feedTitle.toHtmlEscaped();
    values.hostUrl = mailLink(article.feedUrl);
    values.enclosure = enclosures;
    values.date = quillon::ArticlePage::dateText(article.date);
    values.author = article.author.toHtmlEscaped();
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
