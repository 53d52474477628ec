#include "SearchTab.h"

#include "PropertyBag.h"
#include "SearchUrl.h"
#include "ui_SearchTab.h"

SearchTab::SearchTab(QWidget *parent) : QWidget(parent), ui(std::make_unique<Ui::SearchTab>())
{
    ui->setupUi(this);
    ui->txtSearchLimit->setValidator(new QIntValidator(1, 100000, ui->txtSearchLimit));
    ui->txtSearchLimit->setEnabled(false);
    connect(ui->chkSearchLimit, &QCheckBox::toggled, ui->txtSearchLimit, &QLineEdit::setEnabled);
    connect(ui->cboSearchSources, &QComboBox::currentIndexChanged, this, &SearchTab::ShowRange);
}

SearchTab::~SearchTab() = default;

void SearchTab::SetSources(const QList<SearchSource> &sources)
{
    m_sources = sources;
    const QSignalBlocker quiet(ui->cboSearchSources);
    ui->cboSearchSources->clear();
    for (const SearchSource &source : sources)
        ui->cboSearchSources->addItem(source.title);
    ui->cboSearchSources->setCurrentIndex(sources.isEmpty() ? -1 : 0);
    ShowRange();
}

SearchSource SearchTab::CurrentSource() const
{
    const int index = ui->cboSearchSources->currentIndex();
    if (index < 0 || index >= m_sources.size())
        return {quillon::kMissingText, {}, {}, {}, {}};
    return m_sources.at(index);
}

QString SearchTab::Words() const
{
    return ui->txtSearchString->text();
}
bool SearchTab::LimitChecked() const
{
    return ui->chkSearchLimit->isChecked();
}
QString SearchTab::LimitText() const
{
    return ui->txtSearchLimit->text();
}
QComboBox &SearchTab::Categories() const
{
    return *ui->cboCategories_SearchTab;
}

QString SearchTab::RangeText(const SearchSource &source)
{
    if (!SearchUrl::LimitCounts(source.minLimit) || !SearchUrl::LimitCounts(source.maxLimit))
        return QStringLiteral("n/a");
    return QStringLiteral("( ") + source.minLimit + QStringLiteral(" to ") + source.maxLimit +
           QStringLiteral(" )");
}

void SearchTab::ShowRange()
{
    const SearchSource source = CurrentSource();
    ui->lblLimitRange->setText(RangeText(source));
    // A source without a limit of its own takes none from the user either.
    const bool limited =
        SearchUrl::LimitCounts(source.defaultLimit) || SearchUrl::LimitCounts(source.maxLimit);
    ui->chkSearchLimit->setEnabled(limited);
    if (!limited)
        ui->chkSearchLimit->setChecked(false);
    if (limited && ui->txtSearchLimit->text().isEmpty() && SearchUrl::LimitCounts(source.defaultLimit))
        ui->txtSearchLimit->setText(source.defaultLimit);
}
