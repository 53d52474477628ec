#include "frmEditBLogSettings.h"

#include "PublishingUtils.h"
#include "StandardDialogs.h"
#include "commonUtils.h"
#include "ui_frmEditBLogSettings.h"

#include <QLoggingCategory>

#include <algorithm>

Q_LOGGING_CATEGORY(lcPublishing, "corvell.publishing")

using namespace PublishingUtils;

namespace {
constexpr int kServiceCount = 4;
} // namespace

frmEditBLogSettings::frmEditBLogSettings(quillon::SubscribeClientPtr client, qint32 recordNumber,
                                         QWidget *owner)
    : QDialog(owner), ui(std::make_unique<Ui::frmEditBLogSettings>()), m_client(std::move(client)),
      m_number(recordNumber)
{
    ui->setupUi(this);
    for (int code = 0; code < kServiceCount; ++code)
        ui->cboBlogService->addItem(ServiceName(code));
    connect(ui->cmdOK, &QPushButton::clicked, this, &frmEditBLogSettings::OnOK);
    connect(ui->cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
    LoadRecord();
}

frmEditBLogSettings::~frmEditBLogSettings() = default;

void frmEditBLogSettings::LoadRecord()
{
    try {
        const QString title = RecordValue(*m_client, m_number, QStringLiteral("blog_name"));
        setWindowTitle(title + QStringLiteral(" Settings"));
        ui->txtBlogName->setText(title);
        ui->txtPubUsername->setText(RecordValue(*m_client, m_number, QStringLiteral("user")));
        const QString password = RecordValue(*m_client, m_number, QStringLiteral("password"));
        ui->txtPubPassword->setText(password);
        ui->chkSavePassword->setChecked(!password.isEmpty());
        ui->cboBlogService->setCurrentIndex(std::clamp(
            TextToInt(RecordValue(*m_client, m_number, QStringLiteral("publisher"))), 0, kServiceCount - 1));
        ui->txtRPCURL->setText(RecordValue(*m_client, m_number, QStringLiteral("service.post")));
    } catch (const std::exception &e) {
        qCWarning(lcPublishing) << "weblog record" << m_number << "not read:" << e.what();
    }
}

void frmEditBLogSettings::OnOK()
{
    // These two titles mark a deleted record and the end of the list.
    const QString title = ui->txtBlogName->text().trimmed();
    if (title.isEmpty() || title == QLatin1String("DELETED") || title == QLatin1String("-237237")) {
        ShowAlert(this, QStringLiteral("Please give the weblog a title."),
                  QStringLiteral("The title cannot be empty, \"DELETED\" or \"-237237\"."));
        return;
    }
    try {
        SetRecordValue(*m_client, m_number, QStringLiteral("blog_name"), title);
        SetRecordValue(*m_client, m_number, QStringLiteral("user"), ui->txtPubUsername->text());
        // Without "remember" the password is asked for when publishing.
        SetRecordValue(*m_client, m_number, QStringLiteral("password"),
                       ui->chkSavePassword->isChecked() ? ui->txtPubPassword->text() : QString());
        SetRecordValue(*m_client, m_number, QStringLiteral("publisher"),
                       QString::number(ui->cboBlogService->currentIndex()));
        SetRecordValue(*m_client, m_number, QStringLiteral("service.post"), ui->txtRPCURL->text().trimmed());
    } catch (const std::exception &e) {
        ShowAlert(this, QStringLiteral("The weblog settings could not be saved."),
                  QString::fromUtf8(e.what()));
        return;
    }
    accept();
}
