#include "frmPrePublish.h"

#include "ui_frmPrePublish.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcPrePublish, "corvell.publishing.prepublish")

frmPrePublish::frmPrePublish(quillon::SubscribeClientPtr client, QWidget *owner)
    : QDialog(owner), ui(std::make_unique<Ui::frmPrePublish>()), m_client(std::move(client))
{
    ui->setupUi(this);
    ui->lblItem->hide();
    PrePublishChoices stored;
    try {
        stored = PrePublishChoices::Load(*m_client);
    } catch (const std::exception &e) {
        qCWarning(lcPrePublish) << "the publishing defaults were not read:" << e.what();
    }
    ShowChoices(stored);
    UpdateDependents();
    const QList<QAbstractButton *> dependents = {ui->optEditItem, ui->optPublishAsIs, ui->chkIncludeBody,
                                                 ui->optHTML, ui->optPlainText};
    for (QAbstractButton *button : dependents)
        connect(button, &QAbstractButton::toggled, this, &frmPrePublish::UpdateDependents);
    connect(ui->cmdPublish, &QPushButton::clicked, this, &frmPrePublish::ApplyDialog);
    connect(ui->cmdCancel, &QPushButton::clicked, this, &frmPrePublish::CancelDialog);
}

frmPrePublish::~frmPrePublish() = default;

void frmPrePublish::SetInitialStrings(const QString &itemTitle, const QString &weblogTitle)
{
    QString line;
    if (!itemTitle.isEmpty())
        line = QStringLiteral("\"%1\"").arg(itemTitle);
    if (!weblogTitle.isEmpty())
        line += (line.isEmpty() ? QStringLiteral("To ") : QStringLiteral(" to ")) + weblogTitle;
    ui->lblItem->setText(line);
    ui->lblItem->setVisible(!line.isEmpty());
}

void frmPrePublish::PresetEditFirst(bool editFirst)
{
    (editFirst ? ui->optEditItem : ui->optPublishAsIs)->setChecked(true);
}

int frmPrePublish::Run(bool saveMode)
{
    m_result = kResultCancel;
    m_saveMode = saveMode;
    UpdateDependents();
    exec();
    if (m_result == kResultCommand) {
        try {
            GetResults().Save(*m_client);
        } catch (const std::exception &e) {
            qCWarning(lcPrePublish) << "the publishing defaults were not stored:" << e.what();
        }
    }
    return m_result;
}

void frmPrePublish::ApplyDialog()
{
    m_result = kResultCommand;
    accept();
}

void frmPrePublish::CancelDialog()
{
    m_result = kResultCancel;
    reject();
}

// Each check box with the choice it holds.
QList<std::pair<QCheckBox *, bool PrePublishChoices::*>> frmPrePublish::CheckBoxes() const
{
    return {{ui->chkIncludeTitle, &PrePublishChoices::useTitle},
            {ui->chkIncludeBody, &PrePublishChoices::useBody},
            {ui->chkIncludeTop, &PrePublishChoices::includeTop},
            {ui->chkIncludeBottom, &PrePublishChoices::includeBottom},
            {ui->chkIncludeAd, &PrePublishChoices::includeAd},
            {ui->chkCloseAfterPublish, &PrePublishChoices::closeAfterPost},
            {ui->chkSaveInPublishedFolder, &PrePublishChoices::saveInPublishedFolder},
            {ui->chkShowSuccessDialog, &PrePublishChoices::showSuccessDialog},
            {ui->chkParseForInlineLinks, &PrePublishChoices::parseForLinks},
            {ui->chkParseForInlineFormatting, &PrePublishChoices::parseForFormatting},
            {ui->chkAlwaysDoCurrentSettings, &PrePublishChoices::alwaysDoCurrentSettings}};
}

void frmPrePublish::ShowChoices(const PrePublishChoices &choices)
{
    (choices.editFirst ? ui->optEditItem : ui->optPublishAsIs)->setChecked(true);
    (choices.htmlBody ? ui->optHTML : ui->optPlainText)->setChecked(true);
    for (const auto &[box, choice] : CheckBoxes())
        box->setChecked(choices.*choice);
}

PrePublishChoices frmPrePublish::GetResults() const
{
    PrePublishChoices choices;
    choices.editFirst = ui->optEditItem->isChecked();
    choices.htmlBody = ui->optHTML->isChecked();
    for (const auto &[box, choice] : CheckBoxes())
        choices.*choice = box->isChecked();
    return choices;
}

// The body's form only matters with the body; the inline marks only in plain text; posting
// without asking only when nothing is edited first.
void frmPrePublish::UpdateDependents()
{
    const bool editFirst = ui->optEditItem->isChecked();
    ui->cmdPublish->setText(m_saveMode ? QStringLiteral("Save")
                                       : (editFirst ? QStringLiteral("Create") : QStringLiteral("Publish")));
    const bool body = ui->chkIncludeBody->isChecked();
    ui->optHTML->setEnabled(body);
    ui->optPlainText->setEnabled(body);
    const bool plain = body && ui->optPlainText->isChecked();
    ui->chkParseForInlineLinks->setEnabled(plain);
    ui->chkParseForInlineFormatting->setEnabled(plain);
    ui->chkAlwaysDoCurrentSettings->setEnabled(!editFirst);
}
