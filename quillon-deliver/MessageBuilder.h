#pragma once

#include "ArticleHtml.h"
#include "ArticleMessage.h"

#include <QByteArray>

// Makes the RFC 5322 message of an article: a Message-ID that depends only on
// the feed's address and the article's key, so a message delivered again is recognisably the
// same; headers a mail filter can use; a text part, an HTML part or both as the theme says.
class MessageBuilder
{
public:
    enum class LineEnds { Unix, Network };
    // Headers that name the article, for mail filters and for finding the article again.
    static constexpr const char *kFeedUrlHeader = "X-Feed-URL";
    static constexpr const char *kArticleUrlHeader = "X-Article-URL";

    explicit MessageBuilder(const ArticleHtml &html) : m_html(html) {}

    [[nodiscard]] QByteArray build(const ArticleMessage &article, LineEnds ends = LineEnds::Unix) const;
    // Without the angle brackets.
    [[nodiscard]] static QByteArray messageId(const ArticleMessage &article);
    // The text part: body, then the link and enclosures as addresses.
    [[nodiscard]] static QString textPart(const ArticleMessage &article);

private:
    const ArticleHtml &m_html;
};
