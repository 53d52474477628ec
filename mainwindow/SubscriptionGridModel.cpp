#include "SubscriptionGridModel.h"

void SubscriptionGridModel::SetRows(QList<Row> rows)
{
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
}

int SubscriptionGridModel::RowOf(qint32 id) const
{
    for (int i = 0; i < m_rows.size(); ++i) {
        if (m_rows.at(i).id == id)
            return i;
    }
    return -1;
}

qint32 SubscriptionGridModel::IdAt(int row) const
{
    return row >= 0 && row < m_rows.size() ? m_rows.at(row).id : 0;
}

int SubscriptionGridModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int SubscriptionGridModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant SubscriptionGridModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_rows.size())
        return {};
    const Row &row = m_rows.at(index.row());
    if (index.column() == ColumnEnabled)
        return role == Qt::CheckStateRole ? QVariant(row.delivered ? Qt::Checked : Qt::Unchecked)
                                          : QVariant();
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
        return {};
    return index.column() == ColumnTitle ? row.title : row.url;
}

QVariant SubscriptionGridModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case ColumnEnabled:
        return QStringLiteral("Enabled");
    case ColumnTitle:
        return QStringLiteral("Title");
    case ColumnUrl:
        return QStringLiteral("Subscription URL");
    default:
        return {};
    }
}

Qt::ItemFlags SubscriptionGridModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    const Qt::ItemFlags base = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    return index.column() == ColumnEnabled ? base | Qt::ItemIsUserCheckable : base;
}

bool SubscriptionGridModel::setData(const QModelIndex &index, const QVariant &, int role)
{
    if (!index.isValid() || index.column() != ColumnEnabled || role != Qt::CheckStateRole)
        return false;
    Q_EMIT EnabledToggleRequested(IdAt(index.row()));
    return false;
}
