#include "TimeField.h"

#include "FieldError.h"

#include <QRegularExpression>

namespace {
FieldError TooLarge(const QString &number, const QString &fieldName)
{
    return FieldError(QStringLiteral("%1 is too large for %2. Please enter a smaller number.")
                          .arg(number.trimmed(), fieldName));
}
} // namespace

qint32 TimeField::WholeNumber(const QString &text, const QString &fieldName)
{
    static const QRegularExpression digits(QStringLiteral("^\\s*[0-9]+\\s*$"));
    if (!digits.match(text).hasMatch()) {
        throw FieldError(QStringLiteral("\"%1\" is not a whole number. Please enter a whole number for %2.")
                             .arg(text, fieldName));
    }
    bool ok = false;
    const qint32 value = text.trimmed().toInt(&ok);
    if (!ok)
        throw TooLarge(text, fieldName);
    return value;
}

qint32 TimeField::ToSeconds(const QString &number, int unitIndex, const QString &fieldName)
{
    const qint32 amount = WholeNumber(number, fieldName);
    try {
        return IntervalToSeconds(amount, unitIndex);
    } catch (const IntervalOverflow &) {
        throw TooLarge(number, fieldName);
    }
}

TimeDisplay TimeField::Display(qint32 seconds)
{
    return SecondsToDisplay(seconds);
}
