#include "FormControls.h"

#include "TimeField.h"

#include <QAbstractButton>
#include <QButtonGroup>
#include <QComboBox>
#include <QLineEdit>

namespace FormControls {

void ShowChoice(QButtonGroup *group, QAbstractButton *chosen)
{
    if (chosen) {
        chosen->setChecked(true);
        return;
    }
    // An exclusive group cannot show "nothing chosen" by itself.
    group->setExclusive(false);
    for (QAbstractButton *button : group->buttons())
        button->setChecked(false);
    group->setExclusive(true);
}

void ShowTime(QLineEdit *number, QComboBox *unit, qint32 seconds)
{
    const TimeDisplay display = TimeField::Display(seconds);
    number->setText(QString::number(display.amount));
    unit->setCurrentIndex(display.unitIndex);
}

} // namespace FormControls
