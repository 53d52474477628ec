#pragma once

#include <QtGlobal>

class QAbstractButton;
class QButtonGroup;
class QComboBox;
class QLineEdit;

// Showing values in the controls that settings pages share.
namespace FormControls {

// Checks the chosen button; null shows the group with nothing chosen.
void ShowChoice(QButtonGroup *group, QAbstractButton *chosen);
// A time in seconds as a number and its unit (minutes, hours, days).
void ShowTime(QLineEdit *number, QComboBox *unit, qint32 seconds);

} // namespace FormControls
