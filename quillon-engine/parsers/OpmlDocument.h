#pragma once

#include "OpmlOutline.h"
#include "ParseError.h"

namespace quillon {

// The result of reading one OPML document.
struct OpmlDocument
{
    QString title; // head/title
    QList<OpmlOutline> outlines;

    ParseError error = ParseError::None;
    QString errorText;
    QString encoding;
    bool encodingFallback = false;
    int repairs = 0;

    [[nodiscard]] bool ok() const { return error == ParseError::None; }
};

} // namespace quillon
