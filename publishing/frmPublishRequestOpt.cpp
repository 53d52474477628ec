#include "frmPublishRequestOpt.h"

#include "PrePublishChoices.h"
#include "frmPrePublish.h"
#include "ui_frmPublishRequestOpt.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcPublishRequest, "corvell.publishing.request")

frmPublishRequestOpt::frmPublishRequestOpt(quillon::SubscribeClientPtr client,
                                           QList<PublishingUtils::WeblogRecord> weblogs,
                                           const QString &itemTitle, QWidget *owner)
    : QDialog(owner), ui(std::make_unique<Ui::frmPublishRequestOpt>()), m_client(std::move(client)),
      m_itemTitle(itemTitle)
{
    ui->setupUi(this);
    ui->lblItem->setText(QStringLiteral("\"%1\"").arg(itemTitle));
    for (const PublishingUtils::WeblogRecord &weblog : weblogs)
        ui->cboWeblog->addItem(weblog.value, weblog.number);
    bool editFirst = false;
    try {
        editFirst = PrePublishChoices::Load(*m_client).editFirst;
    } catch (const std::exception &e) {
        qCWarning(lcPublishRequest) << "the publishing defaults were not read:" << e.what();
    }
    (editFirst ? ui->optEditItem2 : ui->optPublishAsIs2)->setChecked(true);
    UpdateCommand();
    connect(ui->optEditItem2, &QRadioButton::toggled, this, &frmPublishRequestOpt::UpdateCommand);
    connect(ui->cmdOptions, &QPushButton::clicked, this, &frmPublishRequestOpt::OnOptions);
    connect(ui->cmdPublish, &QPushButton::clicked, this, &frmPublishRequestOpt::OnPublish);
    connect(ui->cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
}

frmPublishRequestOpt::~frmPublishRequestOpt() = default;

qint32 frmPublishRequestOpt::Run()
{
    return exec() == QDialog::Accepted ? ui->cboWeblog->currentData().toInt() : 0;
}

void frmPublishRequestOpt::UpdateCommand()
{
    ui->cmdPublish->setText(ui->optEditItem2->isChecked() ? QStringLiteral("Create")
                                                          : QStringLiteral("Publish"));
}

// The full dialog starts from the choice made here; its command posts straight away.
void frmPublishRequestOpt::OnOptions()
{
    frmPrePublish options(m_client, this);
    options.SetInitialStrings(m_itemTitle, ui->cboWeblog->currentText());
    options.PresetEditFirst(ui->optEditItem2->isChecked());
    if (options.Run() == frmPrePublish::kResultCommand)
        accept();
}

void frmPublishRequestOpt::OnPublish()
{
    try {
        PrePublishChoices choices;
        choices.editFirst = ui->optEditItem2->isChecked();
        choices.SaveEditFirst(*m_client);
    } catch (const std::exception &e) {
        qCWarning(lcPublishRequest) << "the edit choice was not stored:" << e.what();
    }
    accept();
}
