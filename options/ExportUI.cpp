#include "ExportUI.h"

#include "ConsumerSettings.h"
#include "DialogAnswer.h"
#include "EngineNames.h"
#include "FormControls.h"
#include "StandardDialogs.h"
#include "ui_ExportUI.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QTimer>

Q_LOGGING_CATEGORY(lcExport, "corvell.options.export")

const QString ExportUI::kFilter = QStringLiteral("OPML files (*.opml)|*.opml|XML files (*.opml, *.xml, "
                                                 "*.rss, *.atom, *.rdf)|*.opml;*.xml;*.rss;*.atom;*.rdf|"
                                                 "All files (*.*)|*.*");

namespace {
const QString kTitleKey = QStringLiteral("LastExportTitle");

QString ChooseWithDialog(QWidget *owner, const QString &filter)
{
    QFileDialog dialog(owner, QStringLiteral("Export subscriptions"), QString(),
                       FormControls::QtFileFilter(filter));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QStringLiteral("opml"));
    // Replacing a file is asked by the page, like every other question.
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
}
} // namespace

ExportUI::ExportUI(quillon::SubscribeClientPtr client, QWidget *parent)
    : ConfigPage(parent), ui(std::make_unique<Ui::ExportUI>()), m_client(std::move(client)),
      m_chooseFile(&ChooseWithDialog)
{
    ui->setupUi(this);
    connect(ui->chkAll, &QCheckBox::clicked, this, &ExportUI::CheckAll);
    connect(ui->cmdExport, &QPushButton::clicked, this, &ExportUI::Export);
    connect(ui->txtExportTitle, &QLineEdit::textChanged, this, [this] { MarkDirty(); });
    LoadValues();
}

ExportUI::~ExportUI() = default;

void ExportUI::LoadValues()
{
    const auto loading = LoadingGuard();
    try {
        ui->txtExportTitle->setText(GetConsumerSetting(*m_client, kTitleKey,
                                                       QStringLiteral("My subscriptions"),
                                                       EngineNames::kConfigConsumer, QString()));
    } catch (const std::exception &e) {
        qCWarning(lcExport) << "the last export title was not read:" << e.what();
    }
    SetDirty(false);
}

void ExportUI::Apply()
{
    SetConsumerSetting(*m_client, EngineNames::kConfigConsumer, QString(), kTitleKey,
                       ui->txtExportTitle->text());
    SetDirty(false);
}

void ExportUI::paintEvent(QPaintEvent *event)
{
    ConfigPage::paintEvent(event);
    // Drawn first, filled right after: a long list does not hold up the window's opening.
    if (!std::exchange(m_listRead, true))
        QTimer::singleShot(0, this, &ExportUI::FillList);
}

void ExportUI::FillList()
{
    try {
        m_subscriptions = OpmlExport::ReadSubscriptions(*m_client);
    } catch (const std::exception &e) {
        qCWarning(lcExport) << "the subscriptions were not read:" << e.what();
    }
    QTableWidget &grid = *ui->grdSubscriptions;
    grid.setUpdatesEnabled(false);
    grid.setRowCount(int(m_subscriptions.size()));
    for (int row = 0; row < m_subscriptions.size(); ++row) {
        auto *title = new QTableWidgetItem(m_subscriptions.at(row).title);
        title->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        title->setCheckState(Qt::Unchecked);
        grid.setItem(row, 0, title);
        grid.setItem(row, 1, new QTableWidgetItem(m_subscriptions.at(row).url));
    }
    grid.setColumnWidth(0, grid.width() / 2);
    grid.setUpdatesEnabled(true);
}

void ExportUI::CheckAll(bool checked)
{
    QTableWidget &grid = *ui->grdSubscriptions;
    for (int row = 0; row < grid.rowCount(); ++row)
        grid.item(row, 0)->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
}

QList<OpmlExport::Subscription> ExportUI::Checked() const
{
    QList<OpmlExport::Subscription> checked;
    for (int row = 0; row < ui->grdSubscriptions->rowCount(); ++row) {
        if (ui->grdSubscriptions->item(row, 0)->checkState() == Qt::Checked)
            checked.append(m_subscriptions.at(row));
    }
    return checked;
}

void ExportUI::Export()
{
    const QList<OpmlExport::Subscription> checked = Checked();
    if (checked.isEmpty()) {
        ShowAlert(this, QStringLiteral("No subscription is checked."),
                  QStringLiteral("Check the subscriptions to export, or \"Check all\"."));
        return;
    }
    const QString path = m_chooseFile(this, kFilter);
    if (path.isEmpty())
        return;
    if (QFileInfo::exists(path) &&
        AskQuestion(this, QStringLiteral("The file ") + QFileInfo(path).fileName() + " already exists.",
                    QStringLiteral("Do you want to replace it?"),
                    QStringLiteral("replace export file")) != toMessageBoxCode(DialogAnswer::Yes))
        return;
    const QString title = ui->txtExportTitle->text();
    if (const QString error = OpmlExport::Write(path, title, checked); !error.isEmpty()) {
        ShowAlert(this, QStringLiteral("The subscriptions could not be exported."), error);
        return;
    }
    try {
        SetConsumerSetting(*m_client, EngineNames::kConfigConsumer, QString(), kTitleKey, title);
    } catch (const std::exception &e) {
        qCWarning(lcExport) << "the export title was not kept:" << e.what();
    }
    ShowAlert(this, QString::number(checked.size()) + QStringLiteral(" subscriptions were exported."), path);
}
