#pragma once

#include "DialogAnswer.h"
#include "StandardDialog.h"

#include <memory>

namespace Ui {
class frmDoYouWantToSave;
}

// Save (6), do not save (7) or cancel (2); Escape cancels.
class frmDoYouWantToSave : public StandardDialog
{
    Q_OBJECT
public:
    static constexpr int ResultYes = toMessageBoxCode(DialogAnswer::Yes);
    static constexpr int ResultNo = toMessageBoxCode(DialogAnswer::No);
    static constexpr int ResultCancel = toMessageBoxCode(DialogAnswer::Cancel);

    explicit frmDoYouWantToSave(QWidget *owner = nullptr);
    ~frmDoYouWantToSave() override;

    [[nodiscard]] int GetResult() const { return result(); }

private:
    std::unique_ptr<Ui::frmDoYouWantToSave> ui;
};
