#include "PublishingUI.h"

#include "ConsumerSettings.h"
#include "PublishingUtils.h"
#include "commonUtils.h"
#include "frmEditBLogSettings.h"
#include "frmPrePublish.h"
#include "frmPubSettings.h"
#include "ui_PublishingUI.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcPublishingPage, "corvell.options.publishing")

using namespace PublishingUtils;

namespace {
const QString kEngine = QStringLiteral("ENGINE");
const QString kDefaults = QStringLiteral("Publishing_defaults");
const QString kShowQuickPublish = QStringLiteral("ShowQuickPublish");
const QString kEnabled = QStringLiteral("enabled");
constexpr int kRecordRole = Qt::UserRole;
} // namespace

PublishingUI::PublishingUI(quillon::SubscribeClientPtr client, QWidget *parent)
    : ConfigPage(parent), ui(std::make_unique<Ui::PublishingUI>()), m_client(std::move(client))
{
    ui->setupUi(this);
    connect(ui->grdWeblogs, &QTableWidget::itemChanged, this, [this] { MarkDirty(); });
    connect(ui->chkShowQuickPublish, &QCheckBox::toggled, this, [this] { MarkDirty(); });
    connect(ui->cmdAddBlog, &QPushButton::clicked, this, &PublishingUI::AddWeblog);
    connect(ui->cmdEditBlog, &QPushButton::clicked, this, &PublishingUI::EditWeblog);
    connect(ui->grdWeblogs, &QTableWidget::cellDoubleClicked, this, &PublishingUI::EditWeblog);
    connect(ui->cmdDeleteBlog, &QPushButton::clicked, this, &PublishingUI::DeleteWeblog);
    // The defaults are the pre-publish dialog's own, stored when it closes with Save.
    connect(ui->cmdPublishDefaults, &QPushButton::clicked, this,
            [this] { (void)frmPrePublish(m_client, window()).Run(true); });
    LoadValues();
}

PublishingUI::~PublishingUI() = default;

void PublishingUI::LoadValues()
{
    const auto loading = LoadingGuard();
    try {
        ui->chkShowQuickPublish->setChecked(TextToBool(
            GetConsumerSetting(*m_client, kShowQuickPublish, BoolToText(true), kEngine, kDefaults)));
        FillWeblogs();
    } catch (const std::exception &e) {
        qCWarning(lcPublishingPage) << "the weblogs were not read:" << e.what();
    }
    SetDirty(false);
}

void PublishingUI::FillWeblogs()
{
    const QList<WeblogRecord> records = EnumerateWeblogRecords(*m_client, false, QStringLiteral("blog_name"));
    QTableWidget &grid = *ui->grdWeblogs;
    grid.setRowCount(int(records.size()));
    for (int row = 0; row < records.size(); ++row) {
        const qint32 number = records.at(row).number;
        auto *quick = new QTableWidgetItem();
        quick->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        quick->setCheckState(TextToBool(RecordValue(*m_client, number, kEnabled, BoolToText(true)))
                                 ? Qt::Checked
                                 : Qt::Unchecked);
        quick->setData(kRecordRole, number);
        grid.setItem(row, 0, quick);
        grid.setItem(row, 1, new QTableWidgetItem(records.at(row).value));
        grid.setItem(row, 2,
                     new QTableWidgetItem(ServiceName(
                         TextToInt(RecordValue(*m_client, number, QStringLiteral("publisher"))))));
    }
    grid.resizeColumnsToContents();
    if (!records.isEmpty())
        grid.selectRow(0);
    ui->cmdEditBlog->setEnabled(!records.isEmpty());
    ui->cmdDeleteBlog->setEnabled(!records.isEmpty());
}

void PublishingUI::Apply()
{
    SetConsumerSetting(*m_client, kEngine, kDefaults, kShowQuickPublish,
                       BoolToText(ui->chkShowQuickPublish->isChecked()));
    for (int row = 0; row < ui->grdWeblogs->rowCount(); ++row) {
        const QTableWidgetItem *quick = ui->grdWeblogs->item(row, 0);
        SetRecordValue(*m_client, quick->data(kRecordRole).toInt(), kEnabled,
                       BoolToText(quick->checkState() == Qt::Checked));
    }
    SetDirty(false);
}

qint32 PublishingUI::SelectedRecord() const
{
    const QTableWidgetItem *quick = ui->grdWeblogs->item(ui->grdWeblogs->currentRow(), 0);
    return quick ? quick->data(kRecordRole).toInt() : 0;
}

void PublishingUI::AddWeblog()
{
    frmPubSettings dialog(m_client, window());
    if (dialog.Run() == frmPubSettings::kResultOK)
        LoadValues();
}

void PublishingUI::EditWeblog()
{
    const qint32 number = SelectedRecord();
    if (number <= 0)
        return;
    QWidget *over = window();
    frmEditBLogSettings dialog(m_client, number, over);
    dialog.adjustSize();
    dialog.move(over->geometry().center() - dialog.rect().center());
    if (dialog.exec() == QDialog::Accepted)
        LoadValues();
}

void PublishingUI::DeleteWeblog()
{
    const qint32 number = SelectedRecord();
    if (number <= 0)
        return;
    try {
        PublishingUtils::DeleteWeblog(*m_client, number);
    } catch (const std::exception &e) {
        qCWarning(lcPublishingPage) << "weblog" << number << "not deleted:" << e.what();
    }
    LoadValues();
}
