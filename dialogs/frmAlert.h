#pragma once

#include "DialogAnswer.h"
#include "StandardDialog.h"

#include <memory>

namespace Ui {
class frmAlert;
}

// Tells the user something; closes with OK only.
class frmAlert : public StandardDialog
{
    Q_OBJECT
public:
    static constexpr int ResultOK = toMessageBoxCode(DialogAnswer::Ok);

    explicit frmAlert(QWidget *owner = nullptr);
    ~frmAlert() override;

private:
    std::unique_ptr<Ui::frmAlert> ui;
};
