#include "frmEnclosureWarning.h"

#include "DialogStrings.h"
#include "HandleGuard.h"
#include "PromptSeam.h"
#include "SubscriptionSummary.h"
#include "commonUtils.h"
#include "dialogsLogging.h"
#include "localization.h"
#include "ui_frmEnclosureWarning.h"

namespace {
const QString kMediaConsumer = QStringLiteral("MEDIACONSUMER");

// Both keys travel in one bag so a section never holds half an answer.
void WriteDownloadChoice(quillon::SubscribeClient &client, const QString &section, int answer)
{
    HandleGuard values(client, client.NewBag());
    client.SetStringValue(values.get(), QStringLiteral("EnableAutoDownload"), BoolToText(answer == 1));
    client.SetStringValue(values.get(), QStringLiteral("PromptForAutoDownload"), QStringLiteral("0"));
    client.SetSettings(kMediaConsumer, section, values.get());
}
} // namespace

frmEnclosureWarning::frmEnclosureWarning(QWidget *owner)
    : StandardDialog(owner, ResultNo), ui(std::make_unique<Ui::frmEnclosureWarning>())
{
    ui->setupUi(this);
    BindMessage(ui->picIcon, ui->lblPrompt, nullptr, QStyle::SP_MessageBoxQuestion);
    LocalizeTitle(this, DialogStrings::EnclosureTitle);
    AnswerOnClick(ui->cmdYes, ResultYes, DialogStrings::ButtonYes);
    AnswerOnClick(ui->cmdNo, ResultNo, DialogStrings::ButtonNo);
    Localize(ui->checkboxApplyToAllSubscriptions, DialogStrings::EnclosureApplyToAll);
}

frmEnclosureWarning::~frmEnclosureWarning() = default;

bool frmEnclosureWarning::ApplyToAllSubscriptions() const
{
    return ui->checkboxApplyToAllSubscriptions->isChecked();
}

QString frmEnclosureWarning::PromptFor(const QString &title)
{
    return GetLocalizedString(DialogStrings::EnclosurePrompt).replace(QLatin1String("^1"), title);
}

int frmEnclosureWarning::Run(quillon::SubscribeClient &client, qint32 subscriptionId, QWidget *owner)
{
    try {
        const auto summary = SubscriptionSummary::Read(client, subscriptionId);
        if (!summary) {
            qCWarning(lcDialogs) << "no enclosure question for unknown subscription" << subscriptionId;
            return ResultNo;
        }
        Prompt prompt;
        prompt.kind = PromptKind::EnclosureWarning;
        prompt.owner = owner;
        prompt.mainText = PromptFor(summary->title.isEmpty() ? summary->url : summary->title);
        const int answer = PromptSeam::Ask(prompt) == ResultYes ? ResultYes : ResultNo;
        if (prompt.applyToAll)
            WriteDownloadChoice(client, QStringLiteral("Settings"), answer);
        WriteDownloadChoice(client, SubscriptionSpecificsSection(subscriptionId), answer);
        return answer;
    } catch (const quillon::EngineError &error) {
        qCWarning(lcDialogs) << "enclosure question for" << subscriptionId << "failed:" << error.message();
        return ResultNo;
    }
}
