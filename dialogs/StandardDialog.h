#pragma once

#include <QDialog>
#include <QStyle>

class QAbstractButton;
class QLabel;

// A one-use modal dialog that closes with a message-box code. Escape and the window's close
// button answer with the dialog's neutral code, so every way out gives a defined result.
class StandardDialog : public QDialog
{
    Q_OBJECT
public:
    StandardDialog(QWidget *owner, int neutralCode);

    // Sets the main and the extended text; an empty extended text hides its label.
    void PrepareDialog(const QString &mainText, const QString &extendedText = {});
    void reject() override;

protected:
    void BindMessage(QLabel *icon, QLabel *mainText, QLabel *extendedText, QStyle::StandardPixmap pixmap);
    // Closes with code when the button is clicked, and gives it its localized label.
    void AnswerOnClick(QAbstractButton *button, int code, qint32 labelId);
    // Replaces a designed text by its localized one. A missing translation keeps the design,
    // and so does one that differs only by the access key.
    static void Localize(QAbstractButton *button, qint32 id);
    static void Localize(QLabel *label, qint32 id);
    static void LocalizeTitle(QWidget *window, qint32 id);
    void showEvent(QShowEvent *event) override;

private:
    int m_neutralCode;
    QLabel *m_mainText = nullptr;
    QLabel *m_extendedText = nullptr;
};
