#pragma once

#include "PrePublishChoices.h"
#include "WeblogApi.h"

#include <QString>

// Fills the post templates ("pubtop.txt", "pubtopNoLink.txt", "pubbody.txt", "pubbottom.txt",
// "pubad.txt" in QuillonData) with an article, as the pre-publish choices ask.
class PostComposer
{
public:
    struct Article
    {
        QString title;
        QString url;
        QString body; // HTML
        QString author;
        QString date; // as the feed gave it
        QString feedTitle;
        QString feedUrl;
        QString feedHome;
    };

    // templateFolder: where the templates are; a missing one counts as empty.
    explicit PostComposer(QString templateFolder);

    // name: who posts (the weblog account), for "~NAME~".
    [[nodiscard]] WeblogApi::Post Compose(const Article &article, const PrePublishChoices &choices,
                                          const QString &name) const;

private:
    [[nodiscard]] QString Template(const QString &fileName) const;
    [[nodiscard]] static QString PlainBody(const QString &html, const PrePublishChoices &choices);

    QString m_folder;
};
