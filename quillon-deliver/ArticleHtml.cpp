#include "ArticleHtml.h"

#include "ArticlePage.h"
#include "ArticleText.h"
#include "HtmlNormalizer.h"

#include <QDir>
#include <QFile>
#include <QLocale>
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

// The article through the engine's allow-list, and its remote images as links: a mail program
// fetches them only under its own remote-content rule, which a link leaves to the reader.
QString mailBody(const QString &html)
{
    static const QRegularExpression image(QStringLiteral("<img\\b[^>]*>"),
                                          QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression src(QStringLiteral("\\bsrc=\"([^\"]*)\""));
    static const QRegularExpression alt(QStringLiteral("\\balt=\"([^\"]*)\""));
    const QString safe = quillon::HtmlNormalizer::normalize(html);
    QString out;
    qsizetype last = 0;
    for (auto it = image.globalMatch(safe); it.hasNext();) {
        const auto match = it.next();
        out += QStringView(safe).mid(last, match.capturedStart() - last);
        last = match.capturedEnd();
        const QString address = src.match(match.captured()).captured(1);
        const QString text = alt.match(match.captured()).captured(1);
        if (!address.isEmpty())
            out += QStringLiteral("<a href=\"%1\">[%2]</a>")
                       .arg(address, text.isEmpty() ? QStringLiteral("image") : text);
    }
    out += QStringView(safe).mid(last);
    return out;
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
                     .arg(mailLink(e.url), (name.isEmpty() ? e.url : name).toHtmlEscaped(),
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
    values.body = mailBody(article.bodyHtml);
    values.url = mailLink(article.link);
    values.hostTitle = article.feedTitle.toHtmlEscaped();
    values.hostUrl = mailLink(article.feedUrl);
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
