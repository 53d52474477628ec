#include "frmAbout.h"

#include "ui_frmAbout.h"

#ifndef CONFIGCONSUMER_VERSION
#define CONFIGCONSUMER_VERSION "0.0.0"
#endif
#ifndef CONFIGCONSUMER_BUILD
#define CONFIGCONSUMER_BUILD "local"
#endif

frmAbout::frmAbout(QWidget *parent) : QDialog(parent), ui(std::make_unique<Ui::frmAbout>())
{
    ui->setupUi(this);
    ui->lblVersion->setText(VersionText());
    ui->lblBuild->setText(BuildText());
    ui->lblPrivacy->setText(QStringLiteral("Privacy policy: ") + kPrivacyUrl);
    ui->lblContact->setText(QStringLiteral("Contact us: ") + kContactUrl);
    connect(ui->cmdOK, &QPushButton::clicked, this, &QDialog::accept);
}

frmAbout::~frmAbout() = default;

QString frmAbout::VersionText()
{
    return QStringLiteral("Version ") + QStringLiteral(CONFIGCONSUMER_VERSION);
}

QString frmAbout::BuildText()
{
    return QStringLiteral("Build ") + QStringLiteral(CONFIGCONSUMER_BUILD);
}
