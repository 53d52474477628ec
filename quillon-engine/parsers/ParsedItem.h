#pragma once

#include "ParsedEnclosure.h"
#include "ParsedText.h"

#include <QDateTime>
#include <QList>
#include <QStringList>

namespace quillon {

// One RSS item or Atom entry. Dates are in UTC and invalid when absent or unreadable.
struct ParsedItem
{
    ParsedText title;
    QString link;      // the permalink (Atom: the preferred alternate link)
    QStringList links; // every Atom link href in document order
    QString guid;      // as written, never normalised
    ParsedText summary;
    ParsedText content; // the full text when the feed carries one besides the summary
    QString author;
    QDateTime published;
    QDateTime updated;
    QList<ParsedEnclosure> enclosures;
};

} // namespace quillon
