#include "frmAreYouSure.h"

#include "DialogStrings.h"
#include "ui_frmAreYouSure.h"

frmAreYouSure::frmAreYouSure(QWidget *owner)
    : StandardDialog(owner, ResultCancel), ui(std::make_unique<Ui::frmAreYouSure>())
{
    ui->setupUi(this);
    BindMessage(ui->picIcon, ui->lblMainText, ui->lblExtendedText, QStyle::SP_MessageBoxWarning);
    AnswerOnClick(ui->cmdYes, ResultYes, DialogStrings::ButtonYes);
    AnswerOnClick(ui->cmdCancel, ResultCancel, DialogStrings::ButtonCancel);
    Localize(ui->chkSupressWarnings, DialogStrings::SuppressWarnings);
}

frmAreYouSure::~frmAreYouSure() = default;

AreYouSureAnswer frmAreYouSure::GetResult() const
{
    return {result(), ui->chkSupressWarnings->isChecked()};
}
