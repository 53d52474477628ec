#include "frmYesNoQuestion.h"

#include "DialogStrings.h"
#include "ui_frmYesNoQuestion.h"

frmYesNoQuestion::frmYesNoQuestion(QWidget *owner)
    : StandardDialog(owner, ResultNo), ui(std::make_unique<Ui::frmYesNoQuestion>())
{
    ui->setupUi(this);
    BindMessage(ui->picIcon, ui->lblMainText, ui->lblExtendedText, QStyle::SP_MessageBoxQuestion);
    AnswerOnClick(ui->cmdYes, ResultYes, DialogStrings::ButtonYes);
    AnswerOnClick(ui->cmdNo, ResultNo, DialogStrings::ButtonNo);
}

frmYesNoQuestion::~frmYesNoQuestion() = default;
