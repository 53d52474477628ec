#include "SubscriptionFields.h"

#include "EngineError.h"

#include <QDateTime>
#include <QStringList>

namespace quillon {

namespace {
QString describe(const QString &name, const QString &what)
{
    return QStringLiteral("The value of %1 must be %2").arg(name, what);
}

qint32 integerOf(const QString &name, const PropertyValue &value)
{
    if (const auto *n = std::get_if<qint32>(&value))
        return *n;
    if (const auto *s = std::get_if<QString>(&value)) {
        bool ok = false;
        const qint32 n = s->trimmed().toInt(&ok);
        if (ok)
            return n;
    }
    throw EngineError(describe(name, QStringLiteral("a whole number")));
}

QString dateOf(const QString &name, const PropertyValue &value)
{
    const auto *s = std::get_if<QString>(&value);
    const QDateTime time = s ? QDateTime::fromString(s->trimmed(), Qt::ISODate) : QDateTime();
    if (!time.isValid())
        throw EngineError(describe(name, QStringLiteral("an ISO-8601 date and time")));
    return SubscriptionFields::isoDate(time);
}
} // namespace

const QList<SubscriptionFields::Field> &SubscriptionFields::all()
{
    static const QList<Field> fields = {
        {QStringLiteral("TITLE"), QStringLiteral("title"), Kind::Text},
        {QStringLiteral("URL"), QStringLiteral("url"), Kind::Text},
        {QStringLiteral("CATEGORY"), QStringLiteral("category"), Kind::Text},
        {QStringLiteral("USER"), QStringLiteral("user_name"), Kind::Text},
        {QStringLiteral("PASSWORD"), QStringLiteral("password"), Kind::Text},
        {QStringLiteral("UPDATEFREQ"), QStringLiteral("update_freq"), Kind::Integer},
        {QStringLiteral("DELETEREAD"), QStringLiteral("delete_read"), Kind::Integer},
        {QStringLiteral("DELETEUNREAD"), QStringLiteral("delete_unread"), Kind::Integer},
        {QStringLiteral("LASTUPDATESTATUS"), QStringLiteral("last_update_status"), Kind::Text},
        {QStringLiteral("LastDateCheck"), QStringLiteral("last_date_check"), Kind::Date},
        {QStringLiteral("NEXTUPDATETIME"), QStringLiteral("next_update_time"), Kind::Date},
    };
    return fields;
}

const SubscriptionFields::Field *SubscriptionFields::find(const QString &name)
{
    for (const Field &field : all()) {
        if (field.name.compare(name, Qt::CaseInsensitive) == 0)
            return &field;
    }
    return nullptr;
}

bool SubscriptionFields::isReadOnly(const QString &name)
{
    static const QStringList computed = {QStringLiteral("SUBSCRIPTIONID"), QStringLiteral("ITEMREADCOUNT"),
                                         QStringLiteral("ITEMUNREADCOUNT")};
    return computed.contains(name, Qt::CaseInsensitive);
}

QVariant SubscriptionFields::toColumn(const Field &field, const PropertyValue &value)
{
    if (std::holds_alternative<std::monostate>(value))
        return QVariant();
    switch (field.kind) {
    case Kind::Integer:
        return integerOf(field.name, value);
    case Kind::Date:
        return dateOf(field.name, value);
    case Kind::Text:
        break;
    }
    if (std::holds_alternative<BagPtr>(value) || std::holds_alternative<ListPtr>(value))
        throw EngineError(describe(field.name, QStringLiteral("text")));
    return valueText(value);
}

QVariant SubscriptionFields::toFreeValue(const QString &name, const PropertyValue &value)
{
    if (const auto *s = std::get_if<QString>(&value))
        return *s;
    if (const auto *n = std::get_if<qint32>(&value))
        return *n;
    if (std::holds_alternative<std::monostate>(value))
        return QVariant();
    throw EngineError(describe(name, QStringLiteral("text or a number")));
}

PropertyValue SubscriptionFields::fromColumn(const QVariant &value)
{
    if (value.isNull())
        return std::monostate();
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::ULongLong:
        return qint32(value.toLongLong());
    default:
        return value.toString();
    }
}

QString SubscriptionFields::isoDate(const QDateTime &time)
{
    // Every stored article has dates. Qt's formatter, and even QDate's fields, which each work
    // the calendar out again, cost several times this reckoning from the seconds since 1970.
    constexpr qint64 kMsecsPerDay = 86400000;
    const qint64 msecs = time.isValid() ? time.toMSecsSinceEpoch() : 0;
    const qint64 days = msecs / kMsecsPerDay - (msecs % kMsecsPerDay < 0 ? 1 : 0);
    const qint64 secondOfDay = (msecs - days * kMsecsPerDay) / 1000;
    // Days since 1970 to a Gregorian date, counted in 400-year eras from 1 March of year 0.
    const qint64 shifted = days + 719468;
    const qint64 era = (shifted >= 0 ? shifted : shifted - 146096) / 146097;
    const qint64 dayOfEra = shifted - era * 146097;
    const qint64 yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const qint64 dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const qint64 shiftedMonth = (5 * dayOfYear + 2) / 153;
    const int day = int(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1);
    const int month = int(shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9);
    const qint64 year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
    if (!time.isValid() || year < 1 || year > 9999)
        return time.toUTC().toString(Qt::ISODate);
    char text[] = "0000-00-00T00:00:00Z";
    const auto put = [&text](qint64 value, int at, int width) {
        for (int i = at + width - 1; i >= at; --i, value /= 10)
            text[i] = char('0' + value % 10);
    };
    put(year, 0, 4);
    put(month, 5, 2);
    put(day, 8, 2);
    put(secondOfDay / 3600, 11, 2);
    put(secondOfDay / 60 % 60, 14, 2);
    put(secondOfDay % 60, 17, 2);
    return QString::fromLatin1(text, 20);
}

} // namespace quillon
