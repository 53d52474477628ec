#include "StandardDialogs.h"

#include "PromptSeam.h"
#include "dialogsLogging.h"
#include "frmAlert.h"
#include "frmAreYouSure.h"
#include "frmDoYouWantToSave.h"
#include "frmEnclosureWarning.h"
#include "frmUserNameAndPassword.h"
#include "frmYesNoQuestion.h"

Q_LOGGING_CATEGORY(lcDialogs, "corvell.dialogs")

namespace {
Prompt MessagePrompt(PromptKind kind, QWidget *owner, const QString &mainText, const QString &extendedText)
{
    Prompt prompt;
    prompt.kind = kind;
    prompt.owner = owner;
    prompt.mainText = mainText;
    prompt.extendedText = extendedText;
    return prompt;
}
} // namespace

void ShowAlert(QWidget *owner, const QString &mainText, const QString &extendedText)
{
    Prompt prompt = MessagePrompt(PromptKind::Alert, owner, mainText, extendedText);
    PromptSeam::Ask(prompt);
}

int AskQuestion(QWidget *owner, const QString &mainText, const QString &extendedText, const QString &kind)
{
    qCDebug(lcDialogs) << "question" << kind;
    Prompt prompt = MessagePrompt(PromptKind::YesNo, owner, mainText, extendedText);
    return PromptSeam::Ask(prompt) == frmYesNoQuestion::ResultYes ? frmYesNoQuestion::ResultYes
                                                                  : frmYesNoQuestion::ResultNo;
}

int AskDoYouWantToSave(QWidget *owner, const QString &mainText, const QString &extendedText)
{
    Prompt prompt = MessagePrompt(PromptKind::DoYouWantToSave, owner, mainText, extendedText);
    const int answer = PromptSeam::Ask(prompt);
    if (answer == frmDoYouWantToSave::ResultYes || answer == frmDoYouWantToSave::ResultNo)
        return answer;
    return frmDoYouWantToSave::ResultCancel;
}

AreYouSureAnswer AskAreYouSure(QWidget *owner, const QString &mainText, const QString &extendedText)
{
    Prompt prompt = MessagePrompt(PromptKind::AreYouSure, owner, mainText, extendedText);
    const int answer = PromptSeam::Ask(prompt);
    return {answer == frmAreYouSure::ResultYes ? frmAreYouSure::ResultYes : frmAreYouSure::ResultCancel,
            prompt.suppressChecked};
}

namespace {
// Shows one prepared form modally and hands back its answer.
template <typename Form> Form &Prepared(Form &form, const Prompt &prompt)
{
    form.PrepareDialog(prompt.mainText, prompt.extendedText);
    form.exec();
    return form;
}

int ShowAlertForm(Prompt &prompt)
{
    frmAlert form(prompt.owner);
    Prepared(form, prompt);
    return frmAlert::ResultOK;
}

int ShowAreYouSureForm(Prompt &prompt)
{
    frmAreYouSure form(prompt.owner);
    const AreYouSureAnswer answer = Prepared(form, prompt).GetResult();
    prompt.suppressChecked = answer.suppressWarnings;
    return answer.result;
}

int ShowEnclosureForm(Prompt &prompt)
{
    frmEnclosureWarning form(prompt.owner);
    const int answer = Prepared(form, prompt).GetResult();
    prompt.applyToAll = form.ApplyToAllSubscriptions();
    return answer;
}

int ShowLoginForm(Prompt &prompt)
{
    frmUserNameAndPassword form(prompt.owner);
    form.SetUserName(prompt.userName);
    const int answer = Prepared(form, prompt).GetResult();
    prompt.userName = form.UserName();
    prompt.password = form.Password();
    return answer;
}

int ShowPromptForm(Prompt &prompt)
{
    switch (prompt.kind) {
    case PromptKind::MessageBox:
    case PromptKind::Alert:
        return ShowAlertForm(prompt);
    case PromptKind::YesNo: {
        frmYesNoQuestion form(prompt.owner);
        return Prepared(form, prompt).GetResult();
    }
    case PromptKind::DoYouWantToSave: {
        frmDoYouWantToSave form(prompt.owner);
        return Prepared(form, prompt).GetResult();
    }
    case PromptKind::AreYouSure:
        return ShowAreYouSureForm(prompt);
    case PromptKind::EnclosureWarning:
        return ShowEnclosureForm(prompt);
    case PromptKind::UserNameAndPassword:
        return ShowLoginForm(prompt);
    }
    return PromptSeam::NeutralAnswer(prompt.kind);
}
} // namespace

void InstallDialogPrompts()
{
    PromptSeam::SetHandler(&ShowPromptForm);
}
