#pragma once

#include "StandardDialog.h"

#include <memory>

namespace Ui {
class frmYesNoQuestion;
}

// A question answered with Yes (6) or No (7); Escape means No.
class frmYesNoQuestion : public StandardDialog
{
    Q_OBJECT
public:
    static constexpr int ResultYes = 6;
    static constexpr int ResultNo = 7;

    explicit frmYesNoQuestion(QWidget *owner = nullptr);
    ~frmYesNoQuestion() override;

    [[nodiscard]] int GetResult() const { return result(); }

private:
    std::unique_ptr<Ui::frmYesNoQuestion> ui;
};
