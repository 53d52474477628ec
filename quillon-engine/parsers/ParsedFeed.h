#pragma once

#include "ParseError.h"
#include "ParsedItem.h"

namespace quillon {

// The result of reading one feed document.
struct ParsedFeed
{
    QString format; // "rss090", "rss091", "rss092", "rss20", "rss", "rss10", "atom03", "atom10", "atom"
    ParsedText title;
    QString link;
    QStringList links;
    QString id;
    ParsedText description;
    QDateTime published;
    QDateTime updated;
    QList<ParsedItem> items;

    ParseError error = ParseError::None;
    QString errorText;
    QString encoding;              // the character set the bytes were read in
    bool encodingFallback = false; // the declared set was unusable or wrong; read as a guess
    int repairs = 0;               // undeclared entities, stray '&' and control characters mended

    [[nodiscard]] bool ok() const { return error == ParseError::None; }
};

} // namespace quillon
