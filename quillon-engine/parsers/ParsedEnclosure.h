#pragma once

#include <QString>

namespace quillon {

// A media file attached to an item.
struct ParsedEnclosure
{
    QString url;
    QString type;
    qint64 length = -1; // bytes; -1 when absent or not a number
    QString file;       // where a consumer stored it on this computer; never from a feed
};

} // namespace quillon
