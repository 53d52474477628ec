#pragma once

#include "ParsedText.h"

namespace quillon {

// How a feed's text is handed on: subjects and titles as plain text (lists show them as
// they are), bodies as HTML (article pages render them).
class ArticleText
{
public:
    [[nodiscard]] static QString plain(const ParsedText &text);
    [[nodiscard]] static QString html(const ParsedText &text);
    // Tags dropped, character references decoded, runs of white space made one blank.
    [[nodiscard]] static QString stripHtml(const QString &html);
    // Named and numeric character references decoded; anything else kept as it is.
    [[nodiscard]] static QString decodeReferences(const QString &text);
};

} // namespace quillon
