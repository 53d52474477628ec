#pragma once

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
    static constexpr int ResultOK = 1;

    explicit frmAlert(QWidget *owner = nullptr);
    ~frmAlert() override;

private:
    std::unique_ptr<Ui::frmAlert> ui;
};
