#pragma once

#include "AreYouSureAnswer.h"
#include "DialogAnswer.h"
#include "StandardDialog.h"

#include <memory>

namespace Ui {
class frmAreYouSure;
}

// Confirms a step that cannot be undone: Yes (6) or Cancel (2), never No.
class frmAreYouSure : public StandardDialog
{
    Q_OBJECT
public:
    static constexpr int ResultYes = toMessageBoxCode(DialogAnswer::Yes);
    static constexpr int ResultCancel = toMessageBoxCode(DialogAnswer::Cancel);

    explicit frmAreYouSure(QWidget *owner = nullptr);
    ~frmAreYouSure() override;

    [[nodiscard]] AreYouSureAnswer GetResult() const;

private:
    std::unique_ptr<Ui::frmAreYouSure> ui;
};
