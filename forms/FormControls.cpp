#include "FormControls.h"

#include "StandardDialogs.h"
#include "TimeField.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QButtonGroup>
#include <QComboBox>
#include <QLineEdit>
#include <QRegularExpression>
#include <QSpinBox>

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

void SetEnabled(std::initializer_list<QWidget *> controls, bool enabled)
{
    for (QWidget *control : controls)
        control->setEnabled(enabled);
}

std::optional<OutlookFolder> PickMailFolder(QWidget *owner, const QString &unreachable,
                                            const QString &unreachableDetail)
{
    const OutlookPtr store = GetOutlookNamespace();
    if (!store) {
        ShowAlert(owner, unreachable, unreachableDetail);
        return std::nullopt;
    }
    return store->PickFolder(owner);
}

void ShowTime(QLineEdit *number, QComboBox *unit, qint32 seconds)
{
    const TimeDisplay display = TimeField::Display(seconds);
    number->setText(QString::number(display.amount));
    unit->setCurrentIndex(display.unitIndex);
}

void WhenChanged(QWidget *control, QObject *context, const std::function<void()> &changed)
{
    if (auto *edit = qobject_cast<QLineEdit *>(control))
        QObject::connect(edit, &QLineEdit::textChanged, context, changed);
    else if (auto *box = qobject_cast<QComboBox *>(control))
        QObject::connect(box, &QComboBox::currentIndexChanged, context, changed);
    else if (auto *button = qobject_cast<QAbstractButton *>(control))
        QObject::connect(button, &QAbstractButton::toggled, context, changed);
    else if (auto *slider = qobject_cast<QAbstractSlider *>(control))
        QObject::connect(slider, &QAbstractSlider::valueChanged, context, changed);
    else if (auto *spin = qobject_cast<QSpinBox *>(control))
        QObject::connect(spin, &QSpinBox::valueChanged, context, changed);
}

// Qt's dialog reads the patterns from the parentheses: they take the pattern half, blank-separated.
QString QtFileFilter(const QString &pipeFilter)
{
    const QStringList parts = pipeFilter.split(QLatin1Char('|'));
    QStringList filters;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        QString description = parts.at(i);
        const QString patterns = QStringLiteral("(") +
                                 parts.at(i + 1).split(QLatin1Char(';')).join(QLatin1Char(' ')) +
                                 QLatin1Char(')');
        description.replace(QRegularExpression(QStringLiteral("\\(.*\\)")), patterns);
        filters.append(description);
    }
    return filters.join(QStringLiteral(";;"));
}

} // namespace FormControls
