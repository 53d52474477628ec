#include "frmAbout.h"

#include "RegistrySettings.h"
#include "UpdateCheck.h"
#include "commonUtils.h"
#include "ui_frmAbout.h"

#ifndef CONFIGCONSUMER_VERSION
#define CONFIGCONSUMER_VERSION "0.0.0"
#endif
#ifndef CONFIGCONSUMER_BUILD
#define CONFIGCONSUMER_BUILD "local"
#endif
#ifndef CONFIGCONSUMER_BUILD_NUMBER
#define CONFIGCONSUMER_BUILD_NUMBER "0"
#endif
#ifndef CONFIGCONSUMER_UPDATE_URL
#define CONFIGCONSUMER_UPDATE_URL ""
#endif

namespace {
const QString kProduct = QStringLiteral("Quill On");
const QString kSection = QStringLiteral("CONFIGCONSUMER");
const QString kAutoUpdates = QStringLiteral("AutoUpdates");

QString Link(const QString &label, const QString &url)
{
    return QStringLiteral("%1: <a href=\"%2\">%2</a>").arg(label, url.toHtmlEscaped());
}
} // namespace

frmAbout::frmAbout(QWidget *parent, const QUrl &updateAddress)
    : QDialog(parent), ui(std::make_unique<Ui::frmAbout>()),
      m_check(new UpdateCheck(updateAddress, VersionNumber(), this))
{
    ui->setupUi(this);
    ui->lblVersion->setText(VersionText());
    ui->lblBuild->setText(BuildText());
    ui->lblPrivacy->setText(Link(QStringLiteral("Privacy policy"), kPrivacyUrl));
    ui->lblContact->setText(Link(QStringLiteral("Contact us"), kContactUrl));
    connect(ui->cmdOK, &QPushButton::clicked, this, &QDialog::accept);
    connect(ui->cmdCheckUpdates, &QPushButton::clicked, this, &frmAbout::CheckForUpdates);
    connect(m_check, &UpdateCheck::Finished, this, [this](const QString &text) {
        ui->lblUpdateStatus->setText(text);
        ui->cmdCheckUpdates->setEnabled(true);
    });
    const bool autoUpdates =
        TextToBool(GetRegistrySetting(kProduct, kSection, kAutoUpdates, QStringLiteral("0")));
    ui->chkAutoUpdates->setChecked(autoUpdates);
    connect(ui->chkAutoUpdates, &QCheckBox::toggled, this, &frmAbout::KeepAutoUpdates);
    if (autoUpdates)
        CheckForUpdates();
}

frmAbout::~frmAbout() = default;

void frmAbout::CheckForUpdates()
{
    ui->cmdCheckUpdates->setEnabled(false);
    ui->lblUpdateStatus->setText(QStringLiteral("Looking for a newer version..."));
    m_check->Start();
}

void frmAbout::KeepAutoUpdates(bool on)
{
    PutRegistrySetting(kProduct, kSection, kAutoUpdates, on ? QStringLiteral("1") : QStringLiteral("0"));
}

QString frmAbout::VersionNumber()
{
    return QStringLiteral(CONFIGCONSUMER_VERSION);
}

QString frmAbout::VersionText()
{
    return QStringLiteral("Version ") + VersionNumber();
}

QString frmAbout::BuildText()
{
    return QStringLiteral("Build %1 (%2)")
        .arg(QStringLiteral(CONFIGCONSUMER_BUILD_NUMBER), QStringLiteral(CONFIGCONSUMER_BUILD));
}

QUrl frmAbout::BuiltInUpdateAddress()
{
    return QUrl(QStringLiteral(CONFIGCONSUMER_UPDATE_URL));
}
