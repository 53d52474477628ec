#pragma once

#include <QAbstractTableModel>
#include <QList>

// The grid beside the tree: one row per subscription of the chosen category, with whether it
// is delivered to Outlook, its title and its address.
class SubscriptionGridModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { ColumnEnabled = 0, ColumnTitle = 1, ColumnUrl = 2, ColumnCount = 3 };

    struct Row
    {
        qint32 id = 0;
        QString title;
        QString url;
        bool delivered = false;
    };

    using QAbstractTableModel::QAbstractTableModel;

    void SetRows(QList<Row> rows);
    [[nodiscard]] const QList<Row> &Rows() const { return m_rows; }
    // -1 when the subscription has no row.
    [[nodiscard]] int RowOf(qint32 id) const;
    [[nodiscard]] qint32 IdAt(int row) const;

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role = Qt::DisplayRole) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex &index) const override;
    // A click on "Enabled" is handed to the window, which binds and then updates the row.
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;

Q_SIGNALS:
    void EnabledToggleRequested(qint32 id);

private:
    QList<Row> m_rows;
};
