#include "CategoryTreeModel.h"

#include "CategoryTree.h"
#include "DetailsPane.h"
#include "TreeIcons.h"
#include "categoriesUtils.h"

#include <QFont>
#include <QGuiApplication>
#include <QMimeData>
#include <QPalette>

CategoryTreeModel::CategoryTreeModel(CategoryTree &tree, QObject *parent)
    : QAbstractItemModel(parent), m_tree(tree)
{
    ConnectTree();
}

void CategoryTreeModel::ConnectTree()
{
    connect(&m_tree, &CategoryTree::nodeAboutToBeAdded, this, &CategoryTreeModel::OnAboutToBeAdded);
    connect(&m_tree, &CategoryTree::nodeAdded, this, [this] {
        if (std::exchange(m_inserting, false))
            endInsertRows();
    });
    connect(&m_tree, &CategoryTree::nodeAboutToBeRemoved, this, &CategoryTreeModel::OnAboutToBeRemoved);
    connect(&m_tree, &CategoryTree::nodeRemoved, this, [this] {
        if (std::exchange(m_removing, false))
            endRemoveRows();
    });
    connect(&m_tree, &CategoryTree::nodeAboutToBeMoved, this, &CategoryTreeModel::OnAboutToBeMoved);
    connect(&m_tree, &CategoryTree::nodeMoved, this, [this] {
        if (std::exchange(m_moving, false))
            endMoveRows();
    });
    connect(&m_tree, &CategoryTree::nodeChanged, this, &CategoryTreeModel::OnChanged);
    connect(&m_tree, &CategoryTree::aboutToBeCleared, this, &CategoryTreeModel::OnAboutToBeCleared);
    connect(&m_tree, &CategoryTree::cleared, this, [this] {
        if (std::exchange(m_resetting, false))
            endResetModel();
    });
}

void CategoryTreeModel::OnAboutToBeAdded(CategoryNode *parent, int row)
{
    if (m_bulk)
        return;
    beginInsertRows(IndexOf(parent), row, row);
    m_inserting = true;
}

void CategoryTreeModel::OnAboutToBeRemoved(CategoryNode *node)
{
    if (m_dropTarget && (m_dropTarget == node || node->isAncestorOf(m_dropTarget)))
        m_dropTarget = nullptr;
    if (m_bulk)
        return;
    const int row = node->row();
    beginRemoveRows(IndexOf(node->parent()), row, row);
    m_removing = true;
}

void CategoryTreeModel::OnAboutToBeMoved(CategoryNode *node, CategoryNode *newParent, int newRow)
{
    if (m_bulk)
        return;
    const int row = node->row();
    const bool sameParent = node->parent() == newParent;
    // The view counts the destination before the move takes the row out.
    const int destination = sameParent && newRow > row ? newRow + 1 : newRow;
    m_moving = beginMoveRows(IndexOf(node->parent()), row, row, IndexOf(newParent), destination);
}

void CategoryTreeModel::OnChanged(CategoryNode *node)
{
    if (m_bulk)
        return;
    const QModelIndex at = IndexOf(node);
    Q_EMIT dataChanged(at, at);
}

void CategoryTreeModel::OnAboutToBeCleared()
{
    m_dropTarget = nullptr;
    if (m_bulk)
        return;
    beginResetModel();
    m_resetting = true;
}

void CategoryTreeModel::BeginBulkChange()
{
    if (m_bulk)
        return;
    beginResetModel();
    m_bulk = true;
}

void CategoryTreeModel::EndBulkChange()
{
    if (!m_bulk)
        return;
    m_bulk = false;
    endResetModel();
}

CategoryNode *CategoryTreeModel::NodeAt(const QModelIndex &index) const
{
    return index.isValid() ? static_cast<CategoryNode *>(index.internalPointer()) : nullptr;
}

QModelIndex CategoryTreeModel::IndexOf(const CategoryNode *node) const
{
    if (!node || !m_tree.contains(node))
        return {};
    return createIndex(node->row(), 0, const_cast<CategoryNode *>(node));
}

QModelIndex CategoryTreeModel::index(int row, int column, const QModelIndex &parent) const
{
    if (column != 0 || row < 0 || m_bulk)
        return {};
    const CategoryNode *owner = NodeAt(parent);
    const int count = owner ? owner->childCount() : m_tree.topLevelCount();
    if (row >= count)
        return {};
    return createIndex(row, 0, owner ? owner->child(row) : m_tree.topLevelNode(row));
}

QModelIndex CategoryTreeModel::parent(const QModelIndex &child) const
{
    const CategoryNode *node = NodeAt(child);
    return node ? IndexOf(node->parent()) : QModelIndex();
}

int CategoryTreeModel::rowCount(const QModelIndex &parent) const
{
    if (m_bulk || parent.column() > 0)
        return 0;
    const CategoryNode *node = NodeAt(parent);
    return node ? node->childCount() : m_tree.topLevelCount();
}

int CategoryTreeModel::columnCount(const QModelIndex &) const
{
    return 1;
}

QVariant CategoryTreeModel::data(const QModelIndex &index, int role) const
{
    const CategoryNode *node = NodeAt(index);
    if (!node)
        return {};
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return node->text();
    case UnreadCountRole:
        return UnreadCount(*node);
    case FailedRole:
        return categoriesUtils::IsSubscription(node) && DetailsPane::IsFailure(FactsOf(*node).lastStatus);
    case Qt::ForegroundRole:
        return data(index, FailedRole).toBool() ? QVariant(TreeIcons::kFailedColor) : QVariant();
    case Qt::DecorationRole:
        return Decoration(*node);
    case Qt::FontRole: {
        if (!node->bold())
            return {};
        QFont font;
        font.setBold(true);
        return font;
    }
    case Qt::ToolTipRole:
        return ToolTip(*node);
    case Qt::BackgroundRole:
        if (node != m_dropTarget)
            return {};
        return QGuiApplication::palette().color(QPalette::Highlight).lighter(160);
    default:
        return {};
    }
}

SubscriptionFacts CategoryTreeModel::FactsOf(const CategoryNode &node) const
{
    return m_facts ? m_facts->value(node.tag().toInt()) : SubscriptionFacts();
}

qint32 CategoryTreeModel::UnreadCount(const CategoryNode &node) const
{
    if (categoriesUtils::IsSubscription(&node))
        return DetailsPane::CountOrZero(FactsOf(node).unreadCount);
    qint32 sum = 0;
    for (const CategoryNode *subscription : categoriesUtils::CollectSubscriptions(node))
        sum += DetailsPane::CountOrZero(FactsOf(*subscription).unreadCount);
    return sum;
}

QVariant CategoryTreeModel::ToolTip(const CategoryNode &node) const
{
    if (!categoriesUtils::IsSubscription(&node))
        return {};
    // A failing feed says why first; its address follows as for every subscription.
    const SubscriptionFacts facts = FactsOf(node);
    if (DetailsPane::IsFailure(facts.lastStatus))
        return facts.lastStatus + QLatin1Char('\n') + facts.url;
    return facts.url;
}

QVariant CategoryTreeModel::Decoration(const CategoryNode &node) const
{
    const bool category = categoriesUtils::IsCategory(&node);
    const bool failed = !category && DetailsPane::IsFailure(FactsOf(node).lastStatus);
    return TreeIcons::ForImage(node.image(), category, failed);
}

void CategoryTreeModel::FactsChanged(const CategoryNode *node)
{
    for (; node && !m_bulk; node = node->parent()) {
        const QModelIndex at = IndexOf(node);
        Q_EMIT dataChanged(at, at);
    }
}

bool CategoryTreeModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    CategoryNode *node = NodeAt(index);
    if (!node || role != Qt::EditRole)
        return false;
    Q_EMIT RenameRequested(node, value.toString());
    return false;
}

Qt::ItemFlags CategoryTreeModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsDragEnabled |
           Qt::ItemIsDropEnabled;
}

QStringList CategoryTreeModel::mimeTypes() const
{
    return {kNodeMimeType};
}

QMimeData *CategoryTreeModel::mimeData(const QModelIndexList &indexes) const
{
    const CategoryNode *node = indexes.isEmpty() ? nullptr : NodeAt(indexes.first());
    if (!node)
        return nullptr;
    auto *mime = new QMimeData;
    mime->setData(kNodeMimeType, node->key().toUtf8());
    return mime;
}

CategoryNode *CategoryTreeModel::NodeFromMime(const QMimeData *mime) const
{
    if (!mime || !mime->hasFormat(kNodeMimeType))
        return nullptr;
    const QString key = QString::fromUtf8(mime->data(kNodeMimeType));
    return key.isEmpty() ? nullptr : m_tree.findByKey(key);
}

void CategoryTreeModel::SetDropTarget(const CategoryNode *node)
{
    if (node == m_dropTarget)
        return;
    const CategoryNode *old = m_dropTarget;
    m_dropTarget = node;
    for (const CategoryNode *changed : {old, node}) {
        const QModelIndex at = IndexOf(changed);
        if (at.isValid())
            Q_EMIT dataChanged(at, at, {Qt::BackgroundRole});
    }
}
