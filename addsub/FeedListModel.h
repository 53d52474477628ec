#pragma once

#include <QStandardItemModel>
#include <QStringList>

// The grid of a list tab (the directory's feed lists, the import source's outlines): folder rows
// and feed rows with a check cell and an action cell. Checking a feed emits RowToggled; the
// action cell reads "Add", "Remove" or " " (back in its starting state).
class FeedListModel : public QStandardItemModel
{
    Q_OBJECT
public:
    // Columns by key; only the title and the action are shown ("Title", "Action").
    enum Column { Title, Url, Description, Subscribed, Add, ColumnCount };
    enum Role {
        RowTypeRole = Qt::UserRole + 1, // 1 feed; 2 folder of the root list, 4 folder elsewhere
        LevelRole,                      // the outline level the walk gave the row
        SubscriptionIdRole,
    };
    static constexpr int kFeedRow = 1;

    explicit FeedListModel(QObject *parent = nullptr);

    void Clear();
    // Folder and feed rows go under the nearest folder row above them (null for the top).
    QStandardItem *AddFolder(QStandardItem *parent, const QString &title, int level, int rowType);
    QStandardItem *AddFeed(QStandardItem *parent, const QString &title, const QString &url,
                           const QString &description, int level, qint32 subscriptionId);

    [[nodiscard]] bool IsFeed(const QModelIndex &index) const;
    [[nodiscard]] QString TitleOf(const QModelIndex &index) const;
    [[nodiscard]] QString UrlOf(const QModelIndex &index) const;
    [[nodiscard]] QString DescriptionOf(const QModelIndex &index) const;
    [[nodiscard]] bool IsSubscribed(const QModelIndex &index) const;
    [[nodiscard]] qint32 SubscriptionIdOf(const QModelIndex &index) const;
    [[nodiscard]] bool IsChecked(const QModelIndex &index) const;
    // The titles of the folder rows above the row, from the top.
    [[nodiscard]] QStringList FoldersAbove(const QModelIndex &index) const;
    [[nodiscard]] QModelIndexList FeedRows() const;
    [[nodiscard]] int FeedCount() const { return m_feedCount; }
    void SetChecked(const QModelIndex &index, bool checked);
    // Toggles the row, as a click on its check or action cell does.
    void Toggle(const QModelIndex &index);

    // Tabs in titles and descriptions become two blanks.
    [[nodiscard]] static QString CleanText(const QString &text);

Q_SIGNALS:
    void RowToggled(const QModelIndex &titleIndex, bool checked);

private:
    void OnItemChanged(QStandardItem *item);
    void UpdateActionCell(const QModelIndex &titleIndex);
    [[nodiscard]] QModelIndex TitleIndex(const QModelIndex &index) const;
    QList<QStandardItem *> MakeRow(const QString &title, int level, int rowType);

    int m_feedCount = 0;
};
