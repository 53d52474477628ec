#include "ImportTab.h"

#include "ui_ImportTab.h"

#include <QFileDialog>

ImportTab::ImportTab(QWidget *parent) : QWidget(parent), ui(std::make_unique<Ui::ImportTab>())
{
    ui->setupUi(this);
    m_list =
        std::make_unique<FeedListPanel>(*ui->grdImportList, *ui->lblImportDetails, *ui->txtImportDetails);
    connect(ui->cmdExpandImport, &QPushButton::clicked, m_list.get(), &FeedListPanel::ExpandAll);
    connect(ui->cmdCollapseImport, &QPushButton::clicked, m_list.get(), &FeedListPanel::CollapseAll);
    connect(ui->cmdBrowseFile, &QPushButton::clicked, this, &ImportTab::BrowseFile);
    connect(ui->cmdLoadFile, &QPushButton::clicked, this, &ImportTab::LoadClicked);
    connect(ui->txtFilePathName, &QLineEdit::returnPressed, this, &ImportTab::LoadClicked);
    connect(ui->chkImportAll, &QCheckBox::clicked, this, &ImportTab::ImportAllClicked);
    connect(ui->tabImportType, &QTabBar::currentChanged, this, [this]() {
        const bool file = CurrentSource().id.isEmpty();
        for (QWidget *w :
             {static_cast<QWidget *>(ui->txtFilePathName), static_cast<QWidget *>(ui->cmdBrowseFile),
              static_cast<QWidget *>(ui->cmdLoadFile)})
            w->setVisible(file);
        Q_EMIT SourceChanged();
    });
    SetSources({});
    Show(View::Grid);
}

ImportTab::~ImportTab() = default;

void ImportTab::SetSources(const QList<Source> &readers)
{
    const QSignalBlocker quiet(ui->tabImportType);
    m_sources = {{QString(), QStringLiteral("OPML file"), true}};
    m_sources << readers;
    while (ui->tabImportType->count() > 0)
        ui->tabImportType->removeTab(0);
    for (const Source &source : m_sources)
        ui->tabImportType->addTab(source.title);
    ui->tabImportType->setCurrentIndex(0);
}

ImportTab::Source ImportTab::CurrentSource() const
{
    const int index = ui->tabImportType->currentIndex();
    return index >= 0 && index < m_sources.size() ? m_sources.at(index) : Source{};
}

void ImportTab::SelectSource(int index)
{
    ui->tabImportType->setCurrentIndex(index);
}

QString ImportTab::FilePath() const
{
    return ui->txtFilePathName->text();
}
void ImportTab::SetFilePath(const QString &path)
{
    ui->txtFilePathName->setText(path);
}

void ImportTab::Show(View view)
{
    ui->grdImportList->setVisible(view == View::Grid);
    ui->txtLoading->setVisible(view == View::Loading);
    ui->txtNoDataFound->setVisible(view == View::NoData);
}

void ImportTab::SetImportAll(bool checked)
{
    ui->chkImportAll->setChecked(checked);
}
QComboBox &ImportTab::Categories() const
{
    return *ui->cboCategories_importTab;
}
QCheckBox &ImportTab::UseCategory() const
{
    return *ui->chkCategories_ImportTab;
}

void ImportTab::BrowseFile()
{
    const QString path = QFileDialog::getOpenFileName(
        this, QStringLiteral("Import subscriptions"), QString(),
        QStringLiteral("XML files (*.opml *.xml *.rss *.atom *.rdf);;OPML files (*.opml);;All files (*)"));
    if (path.isEmpty())
        return;
    SetFilePath(path);
    Q_EMIT LoadClicked();
}
