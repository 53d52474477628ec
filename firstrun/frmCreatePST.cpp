#include "frmCreatePST.h"

#include "FormControls.h"
#include "StandardDialogs.h"
#include "ui_frmCreatePST.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLocale>
#include <QStandardPaths>

namespace {
QString ChooseWithDialog(QWidget *owner, const QString &title, const QString &filter, const QString &proposed)
{
    QFileDialog dialog(owner, title, proposed, FormControls::QtFileFilter(filter));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QStringLiteral("pst"));
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
}

// Where the delivery keeps its mail unless told otherwise: new stores are proposed beside it.
QString DefaultFolder()
{
    return QDir(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation))
        .filePath(QStringLiteral("Corvell"));
}
} // namespace

frmCreatePST::frmCreatePST(QWidget *parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmCreatePST>()), m_chooseFile(&ChooseWithDialog)
{
    ui->setupUi(this);
    connect(ui->cmdChoosePath, &QPushButton::clicked, this, &frmCreatePST::ChoosePath);
    connect(ui->cmdOK, &QPushButton::clicked, this, &frmCreatePST::Confirm);
    connect(ui->cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
}

frmCreatePST::~frmCreatePST() = default;

QString frmCreatePST::ProposedName(const QDate &today)
{
    QString date = QLocale().toString(today, QLocale::ShortFormat);
    date.replace(QLatin1Char(':'), QLatin1Char('-')).replace(QLatin1Char('/'), QLatin1Char('-'));
    return QStringLiteral("Corvell for Outlook ") + date;
}

void frmCreatePST::ChoosePath()
{
    const bool unnamed = ui->txtCustomPSTName->text().isEmpty();
    const QString name = unnamed ? ProposedName(QDate::currentDate()) : ui->txtCustomPSTName->text();
    const QString folder = ui->txtPSTLocation->text().isEmpty()
                               ? DefaultFolder()
                               : QFileInfo(ui->txtPSTLocation->text()).absolutePath();
    const QString chosen =
        m_chooseFile(this, kChooserTitle, kFilter, QDir(folder).filePath(name + QStringLiteral(".pst")));
    if (chosen.isEmpty())
        return;
    ui->txtPSTLocation->setText(chosen);
    if (unnamed) {
        QString fileName = QFileInfo(chosen).fileName();
        fileName.chop(4);
        ui->txtCustomPSTName->setText(fileName);
    }
}

void frmCreatePST::Confirm()
{
    if (ui->txtCustomPSTName->text().trimmed().isEmpty() || ui->txtPSTLocation->text().trimmed().isEmpty()) {
        ShowAlert(this, kMissingText, QString());
        return;
    }
    accept();
}

NewStoreRequest frmCreatePST::Request() const
{
    const QFileInfo location(ui->txtPSTLocation->text().trimmed());
    NewStoreRequest request;
    request.displayName = ui->txtCustomPSTName->text().trimmed();
    request.folder = location.absolutePath();
    request.fileName = location.fileName();
    request.mode = ui->chkMoveExistingData->isChecked() ? NewStoreRequest::Mode::CreateAndMove
                                                        : NewStoreRequest::Mode::CreateOnly;
    return request;
}

int frmCreatePST::GetResults(quillon::SubscribeClient &client)
{
    if (result() != QDialog::Accepted)
        return 0;
    Request().Write(client);
    return 1;
}
