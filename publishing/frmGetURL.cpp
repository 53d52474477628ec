#include "frmGetURL.h"

#include "StandardDialogs.h"
#include "ui_frmGetURL.h"

#include <QUrl>

frmGetURL::frmGetURL(QWidget *owner) : QDialog(owner), ui(std::make_unique<Ui::frmGetURL>())
{
    ui->setupUi(this);
    connect(ui->cmdOK, &QPushButton::clicked, this, &frmGetURL::OnOK);
    connect(ui->cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
}

frmGetURL::~frmGetURL() = default;

frmGetURL::Results frmGetURL::GetResults() const
{
    return {ui->txtWeblogName->text().trimmed(), ui->txtURL->text().trimmed()};
}

void frmGetURL::OnOK()
{
    const QUrl url(GetResults().url);
    if (!url.isValid() || url.host().isEmpty() ||
        (url.scheme() != QLatin1String("http") && url.scheme() != QLatin1String("https"))) {
        ShowAlert(this, QStringLiteral("Please enter the posting address of the weblog."),
                  QStringLiteral("An address such as https://example.org/xmlrpc.php."));
        return;
    }
    accept();
}
