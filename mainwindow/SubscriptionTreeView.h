#pragma once

#include <QTimer>
#include <QTreeView>

class CategoryNode;
class CategoryTreeModel;

// The tree of categories and subscriptions. A click on a node's picture or Space toggles its
// check, Delete asks to delete it, F2 edits its label, and nodes are dragged onto categories;
// Timer1 scrolls while a drag hovers near the top or bottom edge.
class SubscriptionTreeView : public QTreeView
{
    Q_OBJECT
public:
    // How close to an edge a drag must come to scroll, and how often it scrolls.
    static constexpr int kScrollMargin = 16;
    static constexpr int kScrollIntervalMs = 80;

    explicit SubscriptionTreeView(QWidget *parent = nullptr);

    [[nodiscard]] CategoryNode *NodeAt(const QModelIndex &index) const;
    [[nodiscard]] CategoryNode *CurrentNode() const;
    // The category a node dropped at pos lands in (null: the top level).
    [[nodiscard]] CategoryNode *DropTargetAt(const QPoint &pos) const;
    // Whether pos (viewport coordinates) falls on the node's check picture.
    [[nodiscard]] bool IsOnPicture(const QModelIndex &index, const QPoint &pos) const;
    [[nodiscard]] bool IsEditingLabel() const { return state() == QAbstractItemView::EditingState; }
    // 0 when not scrolling, -1 up, 1 down.
    [[nodiscard]] int ScrollDirection() const { return m_scrollDirection; }

Q_SIGNALS:
    void CheckToggleRequested(CategoryNode *node);
    void DeleteRequested();
    void NodeDropped(CategoryNode *node, CategoryNode *newParent);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void startDrag(Qt::DropActions supportedActions) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    [[nodiscard]] CategoryTreeModel *TreeModel() const;
    [[nodiscard]] bool CanDrop(const QMimeData *mime, const QPoint &pos) const;
    void UpdateEdgeScrolling(const QPoint &pos);
    void StopDragFeedback();
    void OnTimer1();

    QTimer m_timer1;
    int m_scrollDirection = 0;
    QPoint m_lastDragPos;
};
