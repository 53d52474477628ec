#include "Article.h"

#include "ArticleText.h"

#include <QCryptographicHash>

namespace quillon {

namespace {
QString bodyOf(const ParsedItem &item)
{
    return ArticleText::html(item.content.value.isEmpty() ? item.summary : item.content);
}

QString keyFrom(const ParsedItem &item, const QString &body)
{
    if (!item.guid.trimmed().isEmpty())
        return item.guid.trimmed();
    if (!item.link.trimmed().isEmpty())
        return item.link.trimmed();
    const QByteArray digest =
        QCryptographicHash::hash((item.title.value + QChar(0) + body).toUtf8(), QCryptographicHash::Sha1);
    return QStringLiteral("sha1:") + QString::fromLatin1(digest.toHex());
}
} // namespace

Article Article::fromParsed(const ParsedItem &item)
{
    Article article;
    article.subject = ArticleText::plain(item.title);
    article.url = item.link;
    article.body = bodyOf(item);
    article.author = item.author;
    article.published = item.published;
    article.updated = item.updated;
    article.enclosures = item.enclosures;
    article.key = keyFrom(item, article.body);
    return article;
}

QString Article::keyOf(const ParsedItem &item)
{
    const bool needsBody = item.guid.trimmed().isEmpty() && item.link.trimmed().isEmpty();
    return keyFrom(item, needsBody ? bodyOf(item) : QString());
}

} // namespace quillon
