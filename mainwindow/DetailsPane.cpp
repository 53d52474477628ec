#include "DetailsPane.h"

#include "PropertyBag.h"

#include <QDateTime>

QString DetailsPane::Heading(const QString &title)
{
    return QStringLiteral("Details for '") + title + QStringLiteral("'");
}

QString DetailsPane::StatusText(const QString &value, const QString &downloads)
{
    const QString status = value == quillon::kMissingText ? QStringLiteral("n/a") : value;
    return downloads.isEmpty() ? status : status + QStringLiteral("; ") + downloads;
}

QString DetailsPane::DateText(const QString &value, const QLocale &locale)
{
    if (value == quillon::kMissingText || value.trimmed().isEmpty())
        return QStringLiteral("Never");
    const QDateTime when = QDateTime::fromString(value, Qt::ISODate);
    if (!when.isValid())
        return value;
    return locale.toString(when.toLocalTime(), QLocale::ShortFormat);
}

QString DetailsPane::CountText(qint64 value, const QLocale &locale)
{
    return locale.toString(value < 0 ? 0 : value);
}
