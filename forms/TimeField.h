#pragma once

#include "commonUtils.h"

#include <QString>

// The number-and-unit pairs of the editor's time fields: reading what was typed, and the
// number and unit that show a time in seconds.
class TimeField
{
public:
    // The text as a whole number (blanks around it allowed, no sign). Throws FieldError,
    // naming the field in words ("the update frequency"), when it is not one.
    [[nodiscard]] static qint32 WholeNumber(const QString &text, const QString &fieldName);
    // Seconds for the typed number in the unit of that index. Throws FieldError.
    [[nodiscard]] static qint32 ToSeconds(const QString &number, int unitIndex, const QString &fieldName);
    // Days, hours or minutes, the largest that divides the seconds; a time that is not a
    // whole number of minutes shows as minutes, rounded.
    [[nodiscard]] static TimeDisplay Display(qint32 seconds);
};
