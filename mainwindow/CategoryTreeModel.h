#pragma once

#include "SubscriptionListLoader.h"

#include <QAbstractItemModel>
#include <QHash>

class CategoryNode;
class CategoryTree;

// Shows a CategoryTree in a tree view: one column, the node's text, its check-state picture
// and bold categories; beside the text, for the view to draw, the unread count (a category's
// is the sum of its subscriptions') and whether a subscription's last update failed. It
// follows the tree's signals; a bulk change (a full reload) is shown as one reset instead of
// thousands of inserts.
class CategoryTreeModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    static inline const QString kNodeMimeType = QStringLiteral("application/x-configconsumer-node-key");
    enum Role {
        UnreadCountRole = Qt::UserRole + 1, // 0 when nothing is unread or the count is unknown
        FailedRole,                         // true for a subscription whose last update failed
    };

    explicit CategoryTreeModel(CategoryTree &tree, QObject *parent = nullptr);

    [[nodiscard]] QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    [[nodiscard]] QModelIndex parent(const QModelIndex &child) const override;
    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    // An edited label is not taken here: RenameRequested lets the window apply its rules.
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex &index) const override;
    [[nodiscard]] QStringList mimeTypes() const override;
    [[nodiscard]] QMimeData *mimeData(const QModelIndexList &indexes) const override;
    [[nodiscard]] Qt::DropActions supportedDragActions() const override { return Qt::MoveAction; }
    [[nodiscard]] Qt::DropActions supportedDropActions() const override { return Qt::MoveAction; }

    [[nodiscard]] CategoryTree &Tree() const { return m_tree; }
    [[nodiscard]] CategoryNode *NodeAt(const QModelIndex &index) const;
    [[nodiscard]] QModelIndex IndexOf(const CategoryNode *node) const;
    // The node a drag carries, or null.
    [[nodiscard]] CategoryNode *NodeFromMime(const QMimeData *mime) const;

    void BeginBulkChange();
    void EndBulkChange();
    // Highlights the category a dragged node would land in; null for none.
    void SetDropTarget(const CategoryNode *node);
    [[nodiscard]] const CategoryNode *DropTarget() const { return m_dropTarget; }
    // Where the subscriptions' addresses, counts and statuses come from; outlives the model.
    void SetFacts(const QHash<qint32, SubscriptionFacts> *facts) { m_facts = facts; }
    // The subscription's facts changed: its row and those of the categories above it show anew.
    void FactsChanged(const CategoryNode *node);

Q_SIGNALS:
    void RenameRequested(CategoryNode *node, const QString &text);

private:
    void ConnectTree();
    void OnAboutToBeAdded(CategoryNode *parent, int row);
    void OnAboutToBeRemoved(CategoryNode *node);
    void OnAboutToBeMoved(CategoryNode *node, CategoryNode *newParent, int newRow);
    void OnChanged(CategoryNode *node);
    void OnAboutToBeCleared();
    [[nodiscard]] SubscriptionFacts FactsOf(const CategoryNode &node) const;
    [[nodiscard]] qint32 UnreadCount(const CategoryNode &node) const;
    [[nodiscard]] QVariant ToolTip(const CategoryNode &node) const;
    [[nodiscard]] QVariant Decoration(const CategoryNode &node) const;

    CategoryTree &m_tree;
    bool m_bulk = false;
    bool m_moving = false;
    bool m_inserting = false;
    bool m_removing = false;
    bool m_resetting = false;
    const CategoryNode *m_dropTarget = nullptr;
    const QHash<qint32, SubscriptionFacts> *m_facts = nullptr;
};
