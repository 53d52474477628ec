#include "Article.h"

#include "ArticleText.h"

#include <QCryptographicHash>

namespace quillon {

Article Article::fromParsed(const ParsedItem &item)
{
    Article article;
    article.subject = ArticleText::plain(item.title);
    article.url = item.link;
    article.body = ArticleText::html(item.content.value.isEmpty() ? item.summary : item.content);
    article.author = item.author;
    article.published = item.published;
    article.updated = item.updated;
    article.enclosures = item.enclosures;
    if (!item.guid.trimmed().isEmpty()) {
        article.key = item.guid.trimmed();
    } else if (!item.link.trimmed().isEmpty()) {
        article.key = item.link.trimmed();
    } else {
        const QByteArray digest = QCryptographicHash::hash(
            (item.title.value + QChar(0) + article.body).toUtf8(), QCryptographicHash::Sha1);
        article.key = QStringLiteral("sha1:") + QString::fromLatin1(digest.toHex());
    }
    return article;
}

} // namespace quillon
