#include "frmAlert.h"

#include "DialogStrings.h"
#include "ui_frmAlert.h"

frmAlert::frmAlert(QWidget *owner) : StandardDialog(owner, ResultOK), ui(std::make_unique<Ui::frmAlert>())
{
    ui->setupUi(this);
    BindMessage(ui->picIcon, ui->lblMainText, ui->lblExtendedText, QStyle::SP_MessageBoxWarning);
    AnswerOnClick(ui->cmdOK, ResultOK, DialogStrings::ButtonOK);
}

frmAlert::~frmAlert() = default;
