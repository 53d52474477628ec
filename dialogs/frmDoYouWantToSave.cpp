#include "frmDoYouWantToSave.h"

#include "DialogStrings.h"
#include "ui_frmDoYouWantToSave.h"

frmDoYouWantToSave::frmDoYouWantToSave(QWidget *owner)
    : StandardDialog(owner, ResultCancel), ui(std::make_unique<Ui::frmDoYouWantToSave>())
{
    ui->setupUi(this);
    BindMessage(ui->picIcon, ui->lblMainText, ui->lblExtendedText, QStyle::SP_MessageBoxQuestion);
    AnswerOnClick(ui->cmdYes, ResultYes, DialogStrings::ButtonYes);
    AnswerOnClick(ui->cmdNo, ResultNo, DialogStrings::ButtonNo);
    AnswerOnClick(ui->cmdCancel, ResultCancel, DialogStrings::ButtonCancel);
}

frmDoYouWantToSave::~frmDoYouWantToSave() = default;
