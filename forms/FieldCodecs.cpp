#include "FieldCodecs.h"

#include "FieldError.h"
#include "FormControls.h"
#include "TimeField.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QLoggingCategory>
#include <QSpinBox>

#include <limits>
#include <optional>

Q_LOGGING_CATEGORY(lcFields, "corvell.forms.fields")

namespace {

template <typename T> T *Find(const QWidget &page, const QString &name)
{
    if (name.isEmpty())
        return nullptr;
    T *control = page.findChild<T *>(name);
    if (!control)
        qCWarning(lcFields) << page.objectName() << "has no control" << name << "of the kind its field needs";
    return control;
}

QString FieldName(const FieldBinding &field)
{
    return field.label.isEmpty() ? field.key : field.label;
}

// "1"/"0" or "True"/"False" as a state; anything else is not a state.
std::optional<bool> ReadSwitch(FieldCodec codec, const QString &text)
{
    if (codec == FieldCodec::Flag && (text == QLatin1String("1") || text == QLatin1String("0")))
        return text == QLatin1String("1");
    if (codec == FieldCodec::Word && (text.compare(QLatin1String("True"), Qt::CaseInsensitive) == 0 ||
                                      text.compare(QLatin1String("False"), Qt::CaseInsensitive) == 0))
        return text.compare(QLatin1String("True"), Qt::CaseInsensitive) == 0;
    return std::nullopt;
}

void ShowSwitch(QWidget &page, const FieldBinding &field, const QString &stored)
{
    const bool on =
        ReadSwitch(field.codec, stored).value_or(ReadSwitch(field.codec, field.defaultValue).value_or(false));
    auto *off = Find<QAbstractButton>(page, field.offOption);
    if (!on && off) {
        off->setChecked(true);
        return;
    }
    if (auto *button = Find<QAbstractButton>(page, field.control))
        button->setChecked(on);
}

void ShowText(QWidget &page, const FieldBinding &field, const QString &stored)
{
    if (auto *label = qobject_cast<QLabel *>(page.findChild<QWidget *>(field.control)))
        label->setText(stored);
    else if (auto *edit = Find<QLineEdit>(page, field.control))
        edit->setText(stored);
}

qint32 NumberOr(const QString &stored, const QString &fallback, qint32 minimum)
{
    bool ok = false;
    const qint32 value = stored.trimmed().toInt(&ok);
    return ok && value >= minimum ? value : fallback.toInt();
}

void ShowNumber(QWidget &page, const FieldBinding &field, const QString &stored)
{
    const qint32 value = NumberOr(stored, field.defaultValue, std::numeric_limits<qint32>::min());
    QWidget *control = page.findChild<QWidget *>(field.control);
    if (auto *slider = qobject_cast<QAbstractSlider *>(control))
        slider->setValue(value);
    else if (auto *spin = qobject_cast<QSpinBox *>(control))
        spin->setValue(value);
    else if (auto *edit = Find<QLineEdit>(page, field.control))
        edit->setText(QString::number(value));
}

void ShowChoice(QWidget &page, const FieldBinding &field, const QString &stored)
{
    qsizetype index = field.codec == FieldCodec::ChoiceIndex ? NumberOr(stored, field.defaultValue, 0)
                                                             : field.choices.indexOf(stored);
    if (index < 0)
        index = field.choices.indexOf(field.defaultValue);
    if (!field.options.isEmpty()) {
        if (auto *option = Find<QAbstractButton>(page, field.options.value(index)))
            option->setChecked(true);
    } else if (auto *box = Find<QComboBox>(page, field.control)) {
        box->setCurrentIndex(index < box->count() ? int(index) : field.defaultValue.toInt());
    }
}

void ShowSeconds(QWidget &page, const FieldBinding &field, const QString &stored)
{
    qint32 seconds = NumberOr(stored, field.defaultValue, 0);
    if (auto *toggle = Find<QAbstractButton>(page, field.toggle)) {
        toggle->setChecked(seconds != 0);
        // Checking the box again then offers a sensible age rather than none.
        if (seconds == 0)
            seconds = field.defaultValue.toInt();
    }
    auto *number = Find<QLineEdit>(page, field.control);
    auto *unit = Find<QComboBox>(page, field.unit);
    if (number && unit)
        FormControls::ShowTime(number, unit, seconds);
}

QString TakeChoice(const QWidget &page, const FieldBinding &field)
{
    qsizetype index = -1;
    for (qsizetype i = 0; i < field.options.size(); ++i) {
        if (auto *option = Find<QAbstractButton>(page, field.options.at(i)); option && option->isChecked())
            index = i;
    }
    if (field.options.isEmpty()) {
        if (auto *box = Find<QComboBox>(page, field.control))
            index = box->currentIndex();
    }
    if (field.codec == FieldCodec::ChoiceIndex)
        return index < 0 ? field.defaultValue : QString::number(index);
    return field.choices.value(index, field.defaultValue);
}

QString TakeNumber(const QWidget &page, const FieldBinding &field)
{
    QWidget *control = page.findChild<QWidget *>(field.control);
    if (auto *slider = qobject_cast<QAbstractSlider *>(control))
        return QString::number(slider->value());
    if (auto *spin = qobject_cast<QSpinBox *>(control))
        return QString::number(spin->value());
    auto *edit = Find<QLineEdit>(page, field.control);
    return edit ? QString::number(TimeField::WholeNumber(edit->text(), FieldName(field)))
                : field.defaultValue;
}

QString TakeText(const QWidget &page, const FieldBinding &field)
{
    if (auto *label = qobject_cast<QLabel *>(page.findChild<QWidget *>(field.control)))
        return label->text();
    auto *edit = Find<QLineEdit>(page, field.control);
    return edit ? edit->text() : field.defaultValue;
}

} // namespace

namespace FieldCodecs {

void Show(QWidget &page, const FieldBinding &field, const QString &stored)
{
    switch (field.codec) {
    case FieldCodec::Flag:
    case FieldCodec::Word:
        return ShowSwitch(page, field, stored);
    case FieldCodec::Text:
    case FieldCodec::Secret:
        return ShowText(page, field, stored);
    case FieldCodec::Number:
        return ShowNumber(page, field, stored);
    case FieldCodec::Seconds:
        return ShowSeconds(page, field, stored);
    case FieldCodec::ChoiceIndex:
    case FieldCodec::ChoiceText:
        return ShowChoice(page, field, stored);
    }
}

QString Take(const QWidget &page, const FieldBinding &field)
{
    switch (field.codec) {
    case FieldCodec::Flag:
    case FieldCodec::Word: {
        auto *button = Find<QAbstractButton>(page, field.control);
        const bool on = button && button->isChecked();
        return field.codec == FieldCodec::Flag ? (on ? QStringLiteral("1") : QStringLiteral("0"))
                                               : (on ? QStringLiteral("True") : QStringLiteral("False"));
    }
    case FieldCodec::Text:
    case FieldCodec::Secret:
        return TakeText(page, field);
    case FieldCodec::Number:
        return TakeNumber(page, field);
    case FieldCodec::Seconds: {
        auto *number = Find<QLineEdit>(page, field.control);
        auto *unit = Find<QComboBox>(page, field.unit);
        if (!number || !unit)
            return field.defaultValue;
        if (auto *toggle = Find<QAbstractButton>(page, field.toggle); toggle && !toggle->isChecked())
            return QStringLiteral("0");
        return QString::number(TimeField::ToSeconds(number->text(), unit->currentIndex(), FieldName(field)));
    }
    case FieldCodec::ChoiceIndex:
    case FieldCodec::ChoiceText:
        return TakeChoice(page, field);
    }
    return field.defaultValue;
}

QList<QWidget *> Widgets(QWidget &page, const FieldBinding &field)
{
    QList<QWidget *> widgets;
    for (const QString &name :
         QStringList{field.control, field.unit, field.toggle, field.offOption} + field.options) {
        if (QWidget *widget = name.isEmpty() ? nullptr : page.findChild<QWidget *>(name))
            widgets.append(widget);
    }
    return widgets;
}

} // namespace FieldCodecs
