#include "commonUtils.h"

#include <QStringList>

#include <cmath>
#include <limits>

namespace {
constexpr qint32 kMinute = 60;
constexpr qint32 kHour = 3600;
constexpr qint32 kDay = 86400;
} // namespace

QString BoolToText(bool value)
{
    return value ? QStringLiteral("1") : QStringLiteral("0");
}

bool TextToBool(const QString &text)
{
    static const QStringList trueTexts = {QStringLiteral("True"), QStringLiteral("1"),
                                          QStringLiteral("true"), QStringLiteral("TRUE"),
                                          QStringLiteral("YES"),  QStringLiteral("yes")};
    return trueTexts.contains(text, Qt::CaseSensitive);
}

bool IntToBool(qint32 value)
{
    return value >= 1;
}

QString IntFlagToText(qint32 value)
{
    return value == 1 ? QStringLiteral("1") : QStringLiteral("0");
}

qint32 TextToInt(const QString &text)
{
    const QString trimmed = text.trimmed();
    bool ok = false;
    const qint32 whole = trimmed.toInt(&ok);
    if (ok)
        return whole;
    // "2.6" and "1e3" convert too, rounded like the settings pages expect.
    const double number = trimmed.toDouble(&ok);
    if (!ok || !std::isfinite(number))
        return 0;
    const double rounded = std::nearbyint(number);
    if (rounded < std::numeric_limits<qint32>::min() || rounded > std::numeric_limits<qint32>::max())
        return 0;
    return qint32(rounded);
}

qint32 IntervalToSeconds(qint32 amount, int unit)
{
    qint32 factor = 1;
    switch (unit) {
    case UnitMinutes:
        factor = kMinute;
        break;
    case UnitHours:
        factor = kHour;
        break;
    case UnitDays:
        factor = kDay;
        break;
    default:
        return amount;
    }
    const qint64 seconds = qint64(amount) * factor;
    if (seconds < std::numeric_limits<qint32>::min() || seconds > std::numeric_limits<qint32>::max())
        throw IntervalOverflow("interval does not fit in 32-bit seconds");
    return qint32(seconds);
}

TimeDisplay SecondsToDisplay(qint32 seconds)
{
    if (seconds == -1)
        seconds = kHour;
    if (seconds % kDay == 0)
        return {seconds / kDay, UnitDays};
    if (seconds % kHour == 0)
        return {seconds / kHour, UnitHours};
    return {seconds / kMinute, UnitMinutes};
}

QString SubscriptionSpecificsSection(qint32 subscriptionId)
{
    return QStringLiteral("SubscriptionSpecifics_") + QString::number(subscriptionId);
}

QString PublishingSettingsSection(qint32 blogNumber)
{
    return QStringLiteral("Publishing_settings_") + QString::number(blogNumber);
}
