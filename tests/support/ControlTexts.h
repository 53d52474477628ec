#pragma once

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>
#include <QStringList>

// A form's controls read and set by objectName, as one text each, so that a test states a
// whole form in one list of "name=value" entries.
namespace ControlTexts {

// A button "on"/"off", a list or slider its number, a number box with its unit's index, a
// text; ".enabled" and ".hidden" ask for the state.
inline QString Shown(const QWidget &form, const QString &name)
{
    for (const char *state : {".enabled", ".hidden"}) {
        if (!name.endsWith(QLatin1String(state)))
            continue;
        const auto *control = form.findChild<QWidget *>(name.section(QLatin1Char('.'), 0, 0));
        return (state[1] == 'e' ? control->isEnabled() : control->isHidden()) ? "on" : "off";
    }
    QWidget *control = form.findChild<QWidget *>(name);
    if (auto *button = qobject_cast<QAbstractButton *>(control))
        return button->isChecked() ? "on" : "off";
    if (auto *list = qobject_cast<QComboBox *>(control))
        return QString::number(list->currentIndex());
    if (auto *slider = qobject_cast<QAbstractSlider *>(control))
        return QString::number(slider->value());
    if (auto *spin = qobject_cast<QSpinBox *>(control))
        return QString::number(spin->value());
    if (auto *label = qobject_cast<QLabel *>(control))
        return label->text();
    const QString text = qobject_cast<QLineEdit *>(control)->text();
    auto *unit = form.findChild<QComboBox *>(QString(name).replace(0, 3, "cbo"));
    return unit ? text + " " + QString::number(unit->currentIndex()) : text;
}

inline QStringList Shown(const QWidget &form, const QStringList &names)
{
    QStringList values;
    for (const QString &name : names)
        values << Shown(form, name);
    return values;
}

// The value as Shown gives it, but a number box takes its text alone; "click" presses a button.
inline void Edit(QWidget &form, const QString &name, const QString &value)
{
    QWidget *control = form.findChild<QWidget *>(name);
    if (auto *button = qobject_cast<QAbstractButton *>(control))
        value == "click" ? button->click() : button->setChecked(value == "on");
    else if (auto *list = qobject_cast<QComboBox *>(control))
        list->setCurrentIndex(value.toInt());
    else if (auto *slider = qobject_cast<QAbstractSlider *>(control))
        slider->setValue(value.toInt());
    else if (auto *spin = qobject_cast<QSpinBox *>(control))
        spin->setValue(value.toInt());
    else
        qobject_cast<QLineEdit *>(control)->setText(value);
}

// Entries "name=value": their names, and their values in the same order.
inline QStringList Names(const QStringList &entries)
{
    QStringList names;
    for (const QString &entry : entries)
        names << entry.section(QLatin1Char('='), 0, 0);
    return names;
}

inline QStringList Values(const QStringList &entries)
{
    QStringList values;
    for (const QString &entry : entries)
        values << entry.section(QLatin1Char('='), 1);
    return values;
}

inline void Edit(QWidget &form, const QStringList &edits)
{
    for (const QString &edit : edits)
        Edit(form, edit.section(QLatin1Char('='), 0, 0), edit.section(QLatin1Char('='), 1));
}

} // namespace ControlTexts
