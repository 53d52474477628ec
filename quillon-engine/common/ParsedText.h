#pragma once

#include <QString>

namespace quillon {

// A human-readable value and whether it is HTML source or plain text. Consumers that render
// HTML escape plain values; consumers that show text strip markup from HTML ones.
struct ParsedText
{
    QString value;
    bool html = false;
};

} // namespace quillon
