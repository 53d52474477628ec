#pragma once

#include <QString>

// The article page: a template from the local path filled with one article, and the source,
// comments and enclosure blocks inside it.
namespace htmlGenerator {

struct ArticleFields
{
    bool safe = false;       // the "Safe" variants of the templates
    qint32 articleId = 0;
    QString title;
    QString body;            // HTML, put in as it is
    QString url;
    QString dateText;
    QString hiddenText;
    QString idText;
    QString hostUrlFallback;
    QString sourceUrl;
    QString sourceTitle;
    QString commentsUrl;
    QString enclosureUrl;
    QString enclosureType;
    QString diskEnclosure;   // the on-disk copy's reference; "" or the missing marker for none
    QString templateName;    // "" for the default of the variant
};

// programFolder + "/QuillonData/css/current/" (with a trailing separator).
[[nodiscard]] QString LocalPath(const QString &programFolder);
// The whole page for one article.
[[nodiscard]] QString BuildArticlePage(const QString &programFolder, const ArticleFields &fields);

} // namespace htmlGenerator
