#include "FeedListModel.h"

#include <functional>

FeedListModel::FeedListModel(QObject *parent) : QStandardItemModel(0, ColumnCount, parent)
{
    setHorizontalHeaderLabels({QStringLiteral("Title"), QStringLiteral("url"), QStringLiteral("description"),
                               QStringLiteral("subscribed"), QStringLiteral("Action")});
    connect(this, &QStandardItemModel::itemChanged, this, &FeedListModel::OnItemChanged);
}

void FeedListModel::Clear()
{
    removeRows(0, rowCount());
    m_feedCount = 0;
}

QString FeedListModel::CleanText(const QString &text)
{
    QString clean = text;
    return clean.replace(QLatin1Char('\t'), QStringLiteral("  "));
}

QList<QStandardItem *> FeedListModel::MakeRow(const QString &title, int level, int rowType)
{
    QList<QStandardItem *> row;
    for (int c = 0; c < ColumnCount; ++c) {
        auto *item = new QStandardItem();
        item->setEditable(false);
        row << item;
    }
    row[Title]->setText(CleanText(title));
    row[Title]->setData(level, LevelRole);
    row[Title]->setData(rowType, RowTypeRole);
    return row;
}

QStandardItem *FeedListModel::AddFolder(QStandardItem *parent, const QString &title, int level, int rowType)
{
    QList<QStandardItem *> row = MakeRow(title, level, rowType);
    QFont bold = row[Title]->font();
    bold.setBold(true);
    row[Title]->setFont(bold);
    (parent ? parent : invisibleRootItem())->appendRow(row);
    return row[Title];
}

QStandardItem *FeedListModel::AddFeed(QStandardItem *parent, const QString &title, const QString &url,
                                      const QString &description, int level, qint32 subscriptionId)
{
    QList<QStandardItem *> row =
        MakeRow(title.isEmpty() ? QStringLiteral("<no title>") : title, level, kFeedRow);
    const bool subscribed = subscriptionId > 0;
    row[Title]->setCheckable(true);
    row[Title]->setCheckState(subscribed ? Qt::Checked : Qt::Unchecked);
    row[Title]->setData(subscriptionId, SubscriptionIdRole);
    row[Title]->setToolTip(url);
    row[Url]->setText(url);
    row[Description]->setText(CleanText(description));
    row[Subscribed]->setText(subscribed ? QStringLiteral("1") : QStringLiteral("0"));
    row[Add]->setText(QStringLiteral(" "));
    (parent ? parent : invisibleRootItem())->appendRow(row);
    ++m_feedCount;
    return row[Title];
}

QModelIndex FeedListModel::TitleIndex(const QModelIndex &index) const
{
    return index.isValid() ? index.siblingAtColumn(Title) : QModelIndex();
}

bool FeedListModel::IsFeed(const QModelIndex &index) const
{
    return TitleIndex(index).data(RowTypeRole).toInt() == kFeedRow;
}

QString FeedListModel::TitleOf(const QModelIndex &index) const
{
    return TitleIndex(index).data().toString();
}

QString FeedListModel::UrlOf(const QModelIndex &index) const
{
    return index.isValid() ? index.siblingAtColumn(Url).data().toString() : QString();
}

QString FeedListModel::DescriptionOf(const QModelIndex &index) const
{
    return index.isValid() ? index.siblingAtColumn(Description).data().toString() : QString();
}

bool FeedListModel::IsSubscribed(const QModelIndex &index) const
{
    return index.isValid() && index.siblingAtColumn(Subscribed).data().toString() == QLatin1String("1");
}

qint32 FeedListModel::SubscriptionIdOf(const QModelIndex &index) const
{
    return TitleIndex(index).data(SubscriptionIdRole).toInt();
}

bool FeedListModel::IsChecked(const QModelIndex &index) const
{
    return TitleIndex(index).data(Qt::CheckStateRole).toInt() == Qt::Checked;
}

QStringList FeedListModel::FoldersAbove(const QModelIndex &index) const
{
    QStringList folders;
    for (QModelIndex p = TitleIndex(index).parent(); p.isValid(); p = p.parent())
        folders.prepend(p.siblingAtColumn(Title).data().toString());
    return folders;
}

QModelIndexList FeedListModel::FeedRows() const
{
    QModelIndexList rows;
    std::function<void(const QModelIndex &)> visit = [&](const QModelIndex &parent) {
        for (int r = 0; r < rowCount(parent); ++r) {
            const QModelIndex i = index(r, Title, parent);
            if (IsFeed(i))
                rows << i;
            visit(i);
        }
    };
    visit(QModelIndex());
    return rows;
}

void FeedListModel::SetChecked(const QModelIndex &index, bool checked)
{
    const QModelIndex title = TitleIndex(index);
    if (IsFeed(title) && IsChecked(title) != checked)
        setData(title, checked ? Qt::Checked : Qt::Unchecked, Qt::CheckStateRole);
}

void FeedListModel::Toggle(const QModelIndex &index)
{
    SetChecked(index, !IsChecked(index));
}

void FeedListModel::OnItemChanged(QStandardItem *item)
{
    if (item->column() != Title || !item->isCheckable())
        return;
    const QModelIndex title = item->index();
    UpdateActionCell(title);
    Q_EMIT RowToggled(title, IsChecked(title));
}

void FeedListModel::UpdateActionCell(const QModelIndex &title)
{
    const bool checked = IsChecked(title);
    const bool subscribed = IsSubscribed(title);
    QString action = QStringLiteral(" ");
    if (checked && !subscribed)
        action = QStringLiteral("Add");
    else if (!checked && subscribed)
        action = QStringLiteral("Remove");
    itemFromIndex(title.siblingAtColumn(Add))->setText(action);
}
