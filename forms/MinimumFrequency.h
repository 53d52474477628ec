#pragma once

#include <QString>

class QComboBox;
class QLineEdit;
class QWidget;

// The shortest update interval a feed is fetched at without a note, shared by the settings
// editor and the subscription defaults.
class MinimumFrequency
{
public:
    // Exactly this passes.
    static constexpr qint32 kMinimumSeconds = 300;
    static inline const QString kNote =
        QStringLiteral("Note: most RSS services prefer an update frequency of 1 hour or more.");
    static inline const QString kWarning = QStringLiteral(
        "This update frequency is less than the minimum update frequency. Please set the update time "
        "to a value greater than 5 minutes.");

    [[nodiscard]] static bool Below(qint32 seconds) { return seconds < kMinimumSeconds; }
    // A typed interval below the minimum is explained (an alert) and set to 5 minutes; true
    // when it was. Throws FieldError when the number is not a whole number.
    static bool Correct(QWidget *owner, QLineEdit *number, QComboBox *unit, const QString &fieldName);
};
