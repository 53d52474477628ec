#include "MinimumFrequency.h"

#include "StandardDialogs.h"
#include "TimeField.h"
#include "commonUtils.h"

#include <QComboBox>
#include <QLineEdit>

bool MinimumFrequency::Correct(QWidget *owner, QLineEdit *number, QComboBox *unit, const QString &fieldName)
{
    if (!Below(TimeField::ToSeconds(number->text(), unit->currentIndex(), fieldName)))
        return false;
    ShowAlert(owner, kNote, kWarning);
    number->setText(QStringLiteral("5"));
    unit->setCurrentIndex(UnitMinutes);
    return true;
}
