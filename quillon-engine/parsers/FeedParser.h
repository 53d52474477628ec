#pragma once

#include "ParsedFeed.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

namespace quillon {

// Reads an RSS, RDF or Atom document. It does no I/O: the caller hands in the bytes, the
// HTTP content type they came with (for its charset) and the address they came from (the last
// base for relative links). Never throws; a fault ends up in the result's error fields.
class FeedParser
{
public:
    [[nodiscard]] static ParsedFeed parse(const QByteArray &bytes, const QString &contentType = {},
                                          const QUrl &baseUrl = {});
};

} // namespace quillon
