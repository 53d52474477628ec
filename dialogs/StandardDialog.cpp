#include "StandardDialog.h"

#include "QLUtils.h"
#include "localization.h"

#include <QAbstractButton>
#include <QGuiApplication>
#include <QLabel>

namespace {
// The localized text, unless the table cannot answer or only drops the designed access key.
QString Chosen(const QString &designed, qint32 id)
{
    const QString localized = GetLocalizedString(id);
    if (localized.isEmpty() || localized == QLatin1String(".LOCERR"))
        return designed;
    return QString(designed).remove(QLatin1Char('&')) == localized ? designed : localized;
}
} // namespace

StandardDialog::StandardDialog(QWidget *owner, int neutralCode) : QDialog(owner), m_neutralCode(neutralCode)
{
    setResult(neutralCode);
}

void StandardDialog::PrepareDialog(const QString &mainText, const QString &extendedText)
{
    if (m_mainText)
        m_mainText->setText(mainText);
    if (m_extendedText) {
        m_extendedText->setText(extendedText);
        m_extendedText->setVisible(!extendedText.isEmpty());
    }
}

void StandardDialog::reject()
{
    done(m_neutralCode);
}

void StandardDialog::BindMessage(QLabel *icon, QLabel *mainText, QLabel *extendedText,
                                 QStyle::StandardPixmap pixmap)
{
    const int size = style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this);
    icon->setPixmap(style()->standardIcon(pixmap, nullptr, this).pixmap(size, size));
    m_mainText = mainText;
    m_extendedText = extendedText;
    if (windowTitle().isEmpty())
        setWindowTitle(QGuiApplication::applicationDisplayName());
    PrepareDialog({}, {});
}

void StandardDialog::AnswerOnClick(QAbstractButton *button, int code, qint32 labelId)
{
    Localize(button, labelId);
    connect(button, &QAbstractButton::clicked, this, [this, code] { done(code); });
}

void StandardDialog::Localize(QAbstractButton *button, qint32 id)
{
    button->setText(Chosen(button->text(), id));
}

void StandardDialog::Localize(QLabel *label, qint32 id)
{
    label->setText(Chosen(label->text(), id));
}

void StandardDialog::LocalizeTitle(QWidget *window, qint32 id)
{
    window->setWindowTitle(Chosen(window->windowTitle(), id));
}

void StandardDialog::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    ForceForegroundWindow(this);
}
