#include "PostComposer.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QRegularExpression>
#include <QTextDocumentFragment>

namespace {
// Every placeholder at once, so a value that happens to hold one is left as it is.
QString Fill(const QString &text, const QHash<QString, QString> &values)
{
    static const QRegularExpression placeholder(
        QStringLiteral("~(NAME|STITLE|SURL|SHOME|ATITLE|AURL|PUBDATE|BODY|TOP|BOTTOM|AD)~|AUTHOR~"));
    QString filled;
    qsizetype done = 0;
    for (auto it = placeholder.globalMatch(text); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        filled += text.mid(done, match.capturedStart() - done) + values.value(match.captured(0));
        done = match.capturedEnd();
    }
    return filled + text.mid(done);
}
} // namespace

PostComposer::PostComposer(QString templateFolder) : m_folder(std::move(templateFolder)) {}

QString PostComposer::Template(const QString &fileName) const
{
    QFile file(QDir(m_folder).filePath(fileName));
    return file.open(QIODevice::ReadOnly | QIODevice::Text) ? QString::fromUtf8(file.readAll()).trimmed()
                                                            : QString();
}

// The article's text without its markup, with addresses and *bold* / _italic_ marks turned
// into HTML when asked.
QString PostComposer::PlainBody(const QString &html, const PrePublishChoices &choices)
{
    QString text = QTextDocumentFragment::fromHtml(html).toPlainText().toHtmlEscaped();
    if (choices.parseForLinks) {
        static const QRegularExpression address(QStringLiteral(R"re((https?://[^\s<>"]+[^\s<>".,;:!?)]))re"));
        text.replace(address, QStringLiteral(R"(<a href="\1">\1</a>)"));
    }
    if (choices.parseForFormatting) {
        static const QRegularExpression bold(
            QStringLiteral(R"((^|\s)\*(\S[^*\n]*\S|\S)\*(?=\s|$|[.,;:!?]))"));
        static const QRegularExpression italic(
            QStringLiteral(R"((^|\s)_(\S[^_\n]*\S|\S)_(?=\s|$|[.,;:!?]))"));
        text.replace(bold, QStringLiteral(R"(\1<b>\2</b>)"));
        text.replace(italic, QStringLiteral(R"(\1<i>\2</i>)"));
    }
    return QStringLiteral("<p>") + text.replace(QStringLiteral("\n\n"), QStringLiteral("</p>\n<p>")) +
           QStringLiteral("</p>");
}

WeblogApi::Post PostComposer::Compose(const Article &article, const PrePublishChoices &choices,
                                      const QString &name) const
{
    const auto escaped = [](const QString &text) { return text.toHtmlEscaped(); };
    QHash<QString, QString> values = {
        {QStringLiteral("~NAME~"), escaped(name)},
        {QStringLiteral("~STITLE~"), escaped(article.feedTitle)},
        {QStringLiteral("~SURL~"), escaped(article.feedUrl)},
        {QStringLiteral("~SHOME~"), escaped(article.feedHome.isEmpty() ? article.feedUrl : article.feedHome)},
        {QStringLiteral("~ATITLE~"), escaped(article.title)},
        {QStringLiteral("~AURL~"), escaped(article.url)},
        {QStringLiteral("AUTHOR~"), escaped(article.author.isEmpty() ? article.feedTitle : article.author)},
        {QStringLiteral("~PUBDATE~"), escaped(article.date)}};
    if (choices.useBody)
        values.insert(QStringLiteral("~BODY~"),
                      choices.htmlBody ? article.body : PlainBody(article.body, choices));
    if (choices.includeTop)
        values.insert(QStringLiteral("~TOP~"),
                      Fill(Template(article.url.isEmpty() ? QStringLiteral("pubtopNoLink.txt")
                                                          : QStringLiteral("pubtop.txt")),
                           values));
    if (choices.includeBottom)
        values.insert(QStringLiteral("~BOTTOM~"), Fill(Template(QStringLiteral("pubbottom.txt")), values));
    if (choices.includeAd)
        values.insert(QStringLiteral("~AD~"), Fill(Template(QStringLiteral("pubad.txt")), values));
    const QString body = Fill(Template(QStringLiteral("pubbody.txt")), values).trimmed();
    return {choices.useTitle ? article.title : QString(), body, article.url};
}
