#include "frmChooseBlog.h"

#include "ui_frmChooseBlog.h"

frmChooseBlog::frmChooseBlog(QList<WeblogApi::Weblog> weblogs, QWidget *owner)
    : QDialog(owner), ui(std::make_unique<Ui::frmChooseBlog>()), m_weblogs(std::move(weblogs))
{
    ui->setupUi(this);
    QTableWidget &grid = *ui->grdAvailableBlogs;
    grid.setRowCount(int(m_weblogs.size()));
    for (int row = 0; row < m_weblogs.size(); ++row) {
        auto *add = new QTableWidgetItem();
        add->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
        // A single weblog is what the user came for.
        add->setCheckState(m_weblogs.size() == 1 ? Qt::Checked : Qt::Unchecked);
        grid.setItem(row, 0, add);
        auto *title = new QTableWidgetItem(m_weblogs.at(row).name);
        title->setToolTip(m_weblogs.at(row).url);
        grid.setItem(row, 1, title);
    }
    grid.resizeColumnToContents(0);
    OnRowTicked();
    connect(ui->chkAll, &QCheckBox::clicked, this, &frmChooseBlog::TickAll);
    connect(&grid, &QTableWidget::itemChanged, this, &frmChooseBlog::OnRowTicked);
    connect(ui->cmdOK, &QPushButton::clicked, this, &QDialog::accept);
    connect(ui->cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
}

frmChooseBlog::~frmChooseBlog() = default;

void frmChooseBlog::TickAll(bool ticked)
{
    for (int row = 0; row < ui->grdAvailableBlogs->rowCount(); ++row)
        ui->grdAvailableBlogs->item(row, 0)->setCheckState(ticked ? Qt::Checked : Qt::Unchecked);
}

// chkAll follows the rows, and OK needs one ticked.
void frmChooseBlog::OnRowTicked()
{
    const QList<WeblogApi::Weblog> chosen = GetResults();
    const QSignalBlocker quiet(ui->chkAll);
    ui->chkAll->setChecked(!chosen.isEmpty() && chosen.size() == m_weblogs.size());
    ui->cmdOK->setEnabled(!chosen.isEmpty());
}

QList<WeblogApi::Weblog> frmChooseBlog::GetResults() const
{
    QList<WeblogApi::Weblog> chosen;
    for (int row = 0; row < m_weblogs.size(); ++row) {
        if (ui->grdAvailableBlogs->item(row, 0)->checkState() == Qt::Checked)
            chosen.append(m_weblogs.at(row));
    }
    return chosen;
}
