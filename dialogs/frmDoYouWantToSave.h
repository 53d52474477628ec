#pragma once

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
    static constexpr int ResultYes = 6;
    static constexpr int ResultNo = 7;
    static constexpr int ResultCancel = 2;

    explicit frmDoYouWantToSave(QWidget *owner = nullptr);
    ~frmDoYouWantToSave() override;

    [[nodiscard]] int GetResult() const { return result(); }

private:
    std::unique_ptr<Ui::frmDoYouWantToSave> ui;
};
