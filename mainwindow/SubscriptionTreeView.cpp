#include "SubscriptionTreeView.h"

#include "CategoryTree.h"
#include "CategoryTreeModel.h"
#include "SubscriptionTreeDelegate.h"
#include "categoriesUtils.h"

#include <QDrag>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QScrollBar>

SubscriptionTreeView::SubscriptionTreeView(QWidget *parent) : QTreeView(parent)
{
    setHeaderHidden(true);
    setUniformRowHeights(true);
    setIconSize(QSize(16, 16));
    setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::SelectedClicked);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setItemDelegate(new SubscriptionTreeDelegate(this));
    setDragEnabled(true);
    setAcceptDrops(true);
    setDropIndicatorShown(false);
    setDragDropMode(QAbstractItemView::DragDrop);
    // Timer1 does the scrolling near the edges.
    setAutoScroll(false);
    m_timer1.setParent(this);
    m_timer1.setObjectName(QStringLiteral("Timer1"));
    m_timer1.setInterval(kScrollIntervalMs);
    connect(&m_timer1, &QTimer::timeout, this, &SubscriptionTreeView::OnTimer1);
}

CategoryTreeModel *SubscriptionTreeView::TreeModel() const
{
    return qobject_cast<CategoryTreeModel *>(model());
}

CategoryNode *SubscriptionTreeView::NodeAt(const QModelIndex &index) const
{
    const CategoryTreeModel *treeModel = TreeModel();
    return treeModel ? treeModel->NodeAt(index) : nullptr;
}

CategoryNode *SubscriptionTreeView::CurrentNode() const
{
    return NodeAt(currentIndex());
}

bool SubscriptionTreeView::IsOnPicture(const QModelIndex &index, const QPoint &pos) const
{
    if (!index.isValid())
        return false;
    const QRect item = visualRect(index);
    // The picture sits at the start of the item, after the style's small margin.
    const int pictureEnd = item.left() + iconSize().width() + 6;
    return item.contains(pos) && pos.x() < pictureEnd;
}

void SubscriptionTreeView::mousePressEvent(QMouseEvent *event)
{
    const QModelIndex at = indexAt(event->position().toPoint());
    if (event->button() == Qt::LeftButton && IsOnPicture(at, event->position().toPoint())) {
        if (CategoryNode *node = NodeAt(at))
            Q_EMIT CheckToggleRequested(node);
        event->accept();
        return;
    }
    QTreeView::mousePressEvent(event);
}

void SubscriptionTreeView::mouseDoubleClickEvent(QMouseEvent *event)
{
    // A quick second click on the picture is another toggle, not an expand.
    if (IsOnPicture(indexAt(event->position().toPoint()), event->position().toPoint())) {
        mousePressEvent(event);
        return;
    }
    QTreeView::mouseDoubleClickEvent(event);
}

void SubscriptionTreeView::keyPressEvent(QKeyEvent *event)
{
    if (state() != QAbstractItemView::EditingState && CurrentNode()) {
        const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
        if (event->key() == Qt::Key_Space && modifiers == Qt::NoModifier) {
            Q_EMIT CheckToggleRequested(CurrentNode());
            return;
        }
        // Ctrl+Delete is the quick delete: the window looks at Ctrl itself.
        if (event->key() == Qt::Key_Delete &&
            (modifiers == Qt::NoModifier || modifiers == Qt::ControlModifier)) {
            Q_EMIT DeleteRequested();
            return;
        }
    }
    QTreeView::keyPressEvent(event);
}

void SubscriptionTreeView::startDrag(Qt::DropActions)
{
    const QModelIndex current = currentIndex();
    if (!current.isValid() || !model())
        return;
    auto *drag = new QDrag(this);
    drag->setMimeData(model()->mimeData({current}));
    drag->setPixmap(model()->data(current, Qt::DecorationRole).value<QIcon>().pixmap(iconSize()));
    drag->exec(Qt::MoveAction, Qt::MoveAction);
    StopDragFeedback();
}

CategoryNode *SubscriptionTreeView::DropTargetAt(const QPoint &pos) const
{
    CategoryNode *node = NodeAt(indexAt(pos));
    if (!node)
        return nullptr;
    return categoriesUtils::IsCategory(node) ? node : node->parent();
}

bool SubscriptionTreeView::CanDrop(const QMimeData *mime, const QPoint &pos) const
{
    const CategoryTreeModel *treeModel = TreeModel();
    CategoryNode *dragged = treeModel ? treeModel->NodeFromMime(mime) : nullptr;
    if (!dragged)
        return false;
    CategoryNode *target = DropTargetAt(pos);
    return target != dragged->parent() && treeModel->Tree().canMove(dragged, target);
}

void SubscriptionTreeView::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasFormat(CategoryTreeModel::kNodeMimeType))
        event->acceptProposedAction();
    else
        event->ignore();
}

void SubscriptionTreeView::dragMoveEvent(QDragMoveEvent *event)
{
    const QPoint pos = event->position().toPoint();
    m_lastDragPos = pos;
    UpdateEdgeScrolling(pos);
    const bool allowed = CanDrop(event->mimeData(), pos);
    if (CategoryTreeModel *treeModel = TreeModel())
        treeModel->SetDropTarget(allowed ? DropTargetAt(pos) : nullptr);
    if (allowed) {
        event->setDropAction(Qt::MoveAction);
        event->accept();
    } else {
        event->ignore();
    }
}

void SubscriptionTreeView::dragLeaveEvent(QDragLeaveEvent *event)
{
    StopDragFeedback();
    event->accept();
}

void SubscriptionTreeView::dropEvent(QDropEvent *event)
{
    const QPoint pos = event->position().toPoint();
    const bool allowed = CanDrop(event->mimeData(), pos);
    CategoryNode *dragged = allowed ? TreeModel()->NodeFromMime(event->mimeData()) : nullptr;
    CategoryNode *target = DropTargetAt(pos);
    StopDragFeedback();
    if (!dragged) {
        event->ignore();
        return;
    }
    event->setDropAction(Qt::MoveAction);
    event->accept();
    Q_EMIT NodeDropped(dragged, target);
}

void SubscriptionTreeView::UpdateEdgeScrolling(const QPoint &pos)
{
    const int height = viewport()->height();
    m_scrollDirection = pos.y() < kScrollMargin ? -1 : pos.y() > height - kScrollMargin ? 1 : 0;
    if (m_scrollDirection == 0)
        m_timer1.stop();
    else if (!m_timer1.isActive())
        m_timer1.start();
}

void SubscriptionTreeView::StopDragFeedback()
{
    m_timer1.stop();
    m_scrollDirection = 0;
    if (CategoryTreeModel *treeModel = TreeModel())
        treeModel->SetDropTarget(nullptr);
}

void SubscriptionTreeView::OnTimer1()
{
    if (CategoryTreeModel *treeModel = TreeModel())
        treeModel->SetDropTarget(DropTargetAt(m_lastDragPos));
    verticalScrollBar()->triggerAction(m_scrollDirection < 0 ? QAbstractSlider::SliderSingleStepSub
                                                             : QAbstractSlider::SliderSingleStepAdd);
}
