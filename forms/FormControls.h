#pragma once

#include "QLUtils.h"

#include <QtGlobal>

#include <functional>
#include <initializer_list>
#include <optional>

class QAbstractButton;
class QButtonGroup;
class QComboBox;
class QLineEdit;
class QObject;
class QString;
class QWidget;

// Showing values in the controls that settings pages share.
namespace FormControls {

// Checks the chosen button; null shows the group with nothing chosen.
void ShowChoice(QButtonGroup *group, QAbstractButton *chosen);
// A time in seconds as a number and its unit (minutes, hours, days).
void ShowTime(QLineEdit *number, QComboBox *unit, qint32 seconds);
// Calls changed, in context, whenever the control's value changes (text, choice, state, value).
void WhenChanged(QWidget *control, QObject *context, const std::function<void()> &changed);
// Enables or disables every one of the controls at once.
void SetEnabled(std::initializer_list<QWidget *> controls, bool enabled);
// The mail store's folder picker over owner; when the store cannot be reached, the alert with
// these texts and no folder.
[[nodiscard]] std::optional<OutlookFolder> PickMailFolder(QWidget *owner, const QString &unreachable,
                                                          const QString &unreachableDetail);
// A chooser filter in the "description|patterns|..." form, as Qt's file dialog reads it.
[[nodiscard]] QString QtFileFilter(const QString &pipeFilter);

} // namespace FormControls
