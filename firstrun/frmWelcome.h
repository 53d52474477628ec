#pragma once

#include "WelcomeChoices.h"

#include <QDialog>

#include <memory>

namespace Ui {
class frmWelcome;
}
class QCheckBox;

// The first start's one page of choices: file types, where the feeds go, starter feeds, and
// the other readers to import from. The first-run set-up fills, shows and reads it.
class frmWelcome : public QDialog
{
    Q_OBJECT
public:
    static constexpr int kAccepted = 6;
    static constexpr int kClosed = 2;

    explicit frmWelcome(QWidget *parent = nullptr);
    ~frmWelcome() override;

    // Offers importing from a reader: slot 1 is chkImport1, 2 chkImport2, and further readers
    // get boxes of their own below them. "^1" in the label becomes the reader's name.
    void SetCheck(int slot, const QString &readerName);
    // The defaults a new user starts from; call after the SetCheck calls.
    void IniitalizeDialog();
    // Hides what was not offered and fits the dialog to what is left.
    void AdjustDialogSize();
    // 6 when cmdAdd closed the dialog, else 2.
    [[nodiscard]] int GetResult() const { return m_result; }
    [[nodiscard]] WelcomeChoices Choices() const;

private:
    [[nodiscard]] QCheckBox *ImportBox(int slot);
    [[nodiscard]] QList<QCheckBox *> FileTypeBoxes() const;
    void FollowStarterFeeds();

    std::unique_ptr<Ui::frmWelcome> ui;
    QList<QCheckBox *> m_imports;
    QString m_importLabel;
    int m_result = kClosed;
};
