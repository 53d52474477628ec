#include "frmUserNameAndPassword.h"

#include "DialogStrings.h"
#include "EngineNames.h"
#include "HandleGuard.h"
#include "PromptSeam.h"
#include "SubscriptionSummary.h"
#include "dialogsLogging.h"
#include "localization.h"
#include "ui_frmUserNameAndPassword.h"

#include <QPushButton>

using EngineNames::kNewsClass;

namespace {
void SendCredentials(quillon::SubscribeClient &client, qint32 subscriptionId, const QString &user,
                     const QString &password)
{
    HandleGuard values(client, client.NewBag());
    client.SetStringValue(values.get(), QStringLiteral("USER"), user);
    client.SetStringValue(values.get(), QStringLiteral("PASSWORD"), password);
    client.UpdateItem(kNewsClass, subscriptionId, values.get());
}
} // namespace

frmUserNameAndPassword::frmUserNameAndPassword(QWidget *owner)
    : StandardDialog(owner, ResultCancel), ui(std::make_unique<Ui::frmUserNameAndPassword>())
{
    ui->setupUi(this);
    BindMessage(ui->picIcon, ui->lblPrompt, nullptr, QStyle::SP_MessageBoxQuestion);
    LocalizeTitle(this, DialogStrings::LoginTitle);
    Localize(ui->lblUserName, DialogStrings::LoginUserName);
    Localize(ui->lblPassword, DialogStrings::LoginPassword);
    AnswerOnClick(ui->cmdOK, ResultOK, DialogStrings::ButtonOK);
    AnswerOnClick(ui->cmdCancel, ResultCancel, DialogStrings::ButtonCancel);
    connect(ui->txtUserName, &QLineEdit::textChanged, this, &frmUserNameAndPassword::UpdateOK);
    UpdateOK();
}

frmUserNameAndPassword::~frmUserNameAndPassword() = default;

void frmUserNameAndPassword::SetUserName(const QString &userName)
{
    ui->txtUserName->setText(userName);
    // A known user only needs the new password.
    (userName.isEmpty() ? ui->txtUserName : ui->txtPasswordField)->setFocus();
}

QString frmUserNameAndPassword::UserName() const
{
    return ui->txtUserName->text().trimmed();
}

QString frmUserNameAndPassword::Password() const
{
    return ui->txtPasswordField->text();
}

void frmUserNameAndPassword::UpdateOK()
{
    ui->cmdOK->setEnabled(!UserName().isEmpty());
}

QString frmUserNameAndPassword::PromptFor(const QString &name, bool userKnown)
{
    QString prompt = userKnown ? QStringLiteral("The username/password for subscription '^1' is invalid.  "
                                                "Please enter a new one.")
                               : GetLocalizedString(DialogStrings::LoginPrompt);
    return prompt.replace(QLatin1String("^1"), name);
}

bool frmUserNameAndPassword::Run(quillon::SubscribeClient &client, qint32 subscriptionId, QWidget *owner)
{
    try {
        const auto summary = SubscriptionSummary::Read(client, subscriptionId);
        if (!summary) {
            qCWarning(lcDialogs) << "no login question for unknown subscription" << subscriptionId;
            return false;
        }
        Prompt prompt;
        prompt.kind = PromptKind::UserNameAndPassword;
        prompt.owner = owner;
        prompt.mainText = PromptFor(summary->DisplayName(), summary->HasUser());
        prompt.userName = summary->user;
        if (PromptSeam::Ask(prompt) != ResultOK)
            return false;
        if (prompt.userName.trimmed().isEmpty()) {
            qCWarning(lcDialogs) << "login for" << subscriptionId << "not sent: no user name";
            return false;
        }
        SendCredentials(client, subscriptionId, prompt.userName.trimmed(), prompt.password);
        return true;
    } catch (const quillon::EngineError &error) {
        qCWarning(lcDialogs) << "login question for" << subscriptionId << "failed:" << error.message();
        return false;
    }
}
