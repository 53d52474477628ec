#pragma once

#include <QString>

// The article page: a template from the local path filled with one article, and the source,
// comments and enclosure blocks inside it.
namespace htmlGenerator {

struct ArticleFields
{
    bool safe = false; // the "Safe" variants of the templates
    qint32 articleId = 0;
    QString title;
    QString body; // HTML, put in as it is
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
    qint64 enclosureLength = -1; // bytes; shown with the type beside the link when known
    QString author;              // HTML, put in as it is
    QString diskEnclosure;       // the on-disk copy's reference; "" or the missing marker for none
    QString templateName;        // "" for the default of the variant
};

// programFolder + "/QuillonData/css/current/" (with a trailing separator).
[[nodiscard]] QString LocalPath(const QString &programFolder);
// The whole page for one article; "" when the build failed (the caller keeps the page it has).
[[nodiscard]] QString BuildArticlePage(const QString &programFolder, const ArticleFields &fields);

// The blocks put in for "~DATA_SOURCE~", "~DATA_COMMENTS~" and "~DATA_ENCLOSURE~"; each is ""
// when its URL is empty. An enclosure of type "DISK" is the on-disk copy: its URL is the
// reference text and its link asks the delivery add-in to open the copy kept with the article.
[[nodiscard]] QString SourceBlock(const QString &localPath, bool safe, const QString &url,
                                  const QString &title);
[[nodiscard]] QString CommentsBlock(const QString &localPath, bool safe, const QString &url);
// detail: the type and size shown beside a web enclosure's link (plain text).
[[nodiscard]] QString EnclosureBlock(const QString &localPath, bool safe, const QString &url,
                                     const QString &type, qint32 articleId, const QString &detail = {});

// Program-wide values of every page: the host's name ("Corvell" until set) and its address
// ("" until set, which makes each page use its own fallback).
void SetHostTitle(const QString &title);
void SetHostUrl(const QString &url);
[[nodiscard]] QString HostTitle();
[[nodiscard]] QString HostUrl();

} // namespace htmlGenerator
