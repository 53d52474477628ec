#pragma once

#include "ArticleMessage.h"

#include <QString>

// The HTML page of an article: the program's article template ("template.html" of the data
// folder's "css/current") when there is one, else the delivery's own.
class ArticleHtml
{
public:
    // dataFolder: the "QuillonData" folder; empty or without a template uses the built-in one.
    explicit ArticleHtml(const QString &dataFolder = QString());

    [[nodiscard]] QString page(const ArticleMessage &article) const;
    // Paragraphs kept as blank-line separated text, tags dropped, references decoded.
    [[nodiscard]] static QString plainText(const QString &html);

private:
    [[nodiscard]] QString enclosureBlock(const ArticleMessage &article) const;

    QString m_template;
};
