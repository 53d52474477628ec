#pragma once

#include <QDateTime>
#include <QStringView>

namespace quillon {

// Reads the date forms feeds use: RFC 822/1123/2822 (with named, military and numeric zones,
// two-digit years, optional weekday and seconds) and RFC 3339 / ISO 8601 / W3C-DTF. The result
// is in UTC; it is invalid when the text is no date.
class FeedDateParser
{
public:
    [[nodiscard]] static QDateTime parse(QStringView text);
    [[nodiscard]] static QDateTime parseRfc822(QStringView text);
    [[nodiscard]] static QDateTime parseIso8601(QStringView text);
};

} // namespace quillon
