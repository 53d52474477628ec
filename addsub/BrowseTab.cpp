#include "BrowseTab.h"

#include "ui_BrowseTab.h"

BrowseTab::BrowseTab(QWidget *parent) : QWidget(parent), ui(std::make_unique<Ui::BrowseTab>())
{
    ui->setupUi(this);
    ui->grdRootList->setModel(&m_roots);
    ui->splitLists->setStretchFactor(1, 2);
    m_list = std::make_unique<FeedListPanel>(*ui->grdSubList, *ui->lblFeedDetails, *ui->txtFeedDetails);
    connect(ui->cmdExpandSub, &QPushButton::clicked, m_list.get(), &FeedListPanel::ExpandAll);
    connect(ui->cmdCollapseSub, &QPushButton::clicked, m_list.get(), &FeedListPanel::CollapseAll);
    connect(ui->grdRootList->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this]() { Q_EMIT RootSelected(SelectedRootUrl()); });
    ShowLoading(false);
}

BrowseTab::~BrowseTab() = default;

void BrowseTab::ClearRoots()
{
    m_roots.clear();
}

void BrowseTab::ShowRoots(const QList<std::pair<QString, QString>> &rows)
{
    m_roots.clear();
    m_roots.setHorizontalHeaderLabels({QStringLiteral("Feed Lists")});
    for (const auto &[title, url] : rows) {
        auto *item = new QStandardItem(title);
        item->setEditable(false);
        item->setData(url, Qt::UserRole);
        item->setToolTip(url);
        m_roots.appendRow(item);
    }
    SelectRoot(0);
}

QString BrowseTab::SelectedRootUrl() const
{
    return ui->grdRootList->currentIndex().data(Qt::UserRole).toString();
}

void BrowseTab::SelectRoot(int row)
{
    if (row >= 0 && row < m_roots.rowCount())
        ui->grdRootList->setCurrentIndex(m_roots.index(row, 0));
}

void BrowseTab::ShowLoading(bool loading)
{
    ui->lblSubLoading->setVisible(loading);
    ui->grdSubList->setVisible(!loading);
}

QComboBox &BrowseTab::Categories() const
{
    return *ui->cboCategories_BrowseTab;
}
QCheckBox &BrowseTab::UseCategory() const
{
    return *ui->chkCategories_BrowseTab;
}
