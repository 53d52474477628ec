#pragma once

#include <QLocale>
#include <QString>

// The texts of the details pane, from the values the engine gives. The marker -237237 stands
// for a value the engine does not have.
class DetailsPane
{
public:
    static inline const QString kNothingSelected = QStringLiteral("Select a Subscription or Category");

    // "Details for '<title>'".
    [[nodiscard]] static QString Heading(const QString &title);
    // The last fetch result, "n/a" when there is none.
    // With the downloads' progress after it when some are under way.
    [[nodiscard]] static QString StatusText(const QString &value, const QString &downloads = {});
    // An engine date (ISO 8601, UTC) in the system's short date and time; "Never" when there
    // is none. A text that is not a date is shown as it is.
    [[nodiscard]] static QString DateText(const QString &value, const QLocale &locale = QLocale());
    // A count as a grouped number; a missing count is 0.
    [[nodiscard]] static QString CountText(qint64 value, const QLocale &locale = QLocale());
    // Whether the last fetch failed: the engine's status then begins with "Error".
    [[nodiscard]] static bool IsFailure(const QString &status)
    {
        return status.startsWith(QLatin1String("Error"));
    }
    // A missing count (the marker, or below 0) adds nothing to a sum.
    [[nodiscard]] static qint32 CountOrZero(qint32 value) { return value < 0 ? 0 : value; }
};
