#pragma once

#include <QString>

#include <stdexcept>

// Text encodings of values kept in settings, and the seconds display shared by every editor.

// Raised when an interval does not fit in 32-bit seconds.
class IntervalOverflow : public std::overflow_error
{
public:
    using std::overflow_error::overflow_error;
};

// Unit indexes of the interval editors.
enum TimeUnit : int { UnitMinutes = 0, UnitHours = 1, UnitDays = 2 };

struct TimeDisplay
{
    qint32 amount;
    int unitIndex;
};

[[nodiscard]] QString BoolToText(bool value);
// True only for "True", "1", "true", "TRUE", "YES", "yes".
[[nodiscard]] bool TextToBool(const QString &text);
[[nodiscard]] bool IntToBool(qint32 value);
// "1" for exactly 1, else "0".
[[nodiscard]] QString IntFlagToText(qint32 value);
// 0 when the text is not a number.
[[nodiscard]] qint32 TextToInt(const QString &text);
// Unit 0 minutes, 1 hours, 2 days; any other unit leaves the amount as it is.
// Throws IntervalOverflow when the product leaves 32 bits.
[[nodiscard]] qint32 IntervalToSeconds(qint32 amount, int unit);
// -1 (engine default) shows as 1 hour; else days, hours or minutes, the largest that divides.
[[nodiscard]] TimeDisplay SecondsToDisplay(qint32 seconds);

[[nodiscard]] QString SubscriptionSpecificsSection(qint32 subscriptionId);
[[nodiscard]] QString PublishingSettingsSection(qint32 blogNumber);

// The icon name of an enclosure ("audio", "video", "image", "document", "archive" or "file"):
// by its MIME type when that says, else by the URL's file extension.
[[nodiscard]] QString EnclosureFileType(const QString &url, const QString &mimeType);
