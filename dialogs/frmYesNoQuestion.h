#pragma once

#include "DialogAnswer.h"
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
    static constexpr int ResultYes = toMessageBoxCode(DialogAnswer::Yes);
    static constexpr int ResultNo = toMessageBoxCode(DialogAnswer::No);

    explicit frmYesNoQuestion(QWidget *owner = nullptr);
    ~frmYesNoQuestion() override;

    [[nodiscard]] int GetResult() const { return result(); }

private:
    std::unique_ptr<Ui::frmYesNoQuestion> ui;
};
