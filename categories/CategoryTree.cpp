#include "CategoryTree.h"

#include <QLoggingCategory>

#include <algorithm>

Q_LOGGING_CATEGORY(lcCategoryTree, "corvell.categories.tree")

namespace {
const QString kSeparator = QStringLiteral("~~~");

int subtreeHeight(const CategoryNode *node)
{
    int height = 0;
    for (int i = 0; i < node->childCount(); ++i)
        height = std::max(height, 1 + subtreeHeight(node->child(i)));
    return height;
}
} // namespace

CategoryTree::CategoryTree(QObject *parent) : QObject(parent), m_root(new CategoryNode(this, nullptr, 0))
{
    // Users expect "apple" beside "Apple", and accented names beside their plain letters.
    m_collator.setCaseSensitivity(Qt::CaseInsensitive);
}

CategoryTree::~CategoryTree() = default;

bool CategoryTree::contains(const CategoryNode *node) const
{
    return node && node->m_tree == this && node != m_root.get();
}

CategoryNode *CategoryTree::parentOrRoot(CategoryNode *parent) const
{
    return parent ? parent : m_root.get();
}

CategoryNode *CategoryTree::visibleParent(CategoryNode *parentOrRoot) const
{
    return parentOrRoot == m_root.get() ? nullptr : parentOrRoot;
}

bool CategoryTree::lessThan(const QString &a, const QString &b) const
{
    const int order = m_collator.compare(a, b);
    if (order != 0)
        return order < 0;
    // Texts that differ only in case stay apart and in a fixed order.
    return a < b;
}

size_t CategoryTree::sortedPosition(const CategoryNode *parent, const QString &text) const
{
    const auto &children = parent->m_children;
    // Saved trees arrive in sorted order: appending is the common case.
    if (children.empty() || !lessThan(text, children.back()->m_text))
        return children.size();
    const auto at = std::upper_bound(children.begin(), children.end(), text,
                                     [this](const QString &t, const std::unique_ptr<CategoryNode> &node) {
                                         return lessThan(t, node->m_text);
                                     });
    return size_t(at - children.begin());
}

int CategoryTree::rowOf(const CategoryNode *node) const
{
    // Views ask for rows all the time; the sort order finds them without a walk.
    const auto &siblings = node->m_parent->m_children;
    auto at = std::lower_bound(siblings.begin(), siblings.end(), node->m_text,
                               [this](const std::unique_ptr<CategoryNode> &sibling, const QString &text) {
                                   return lessThan(sibling->m_text, text);
                               });
    while (at != siblings.end() && at->get() != node)
        ++at;
    return at == siblings.end() ? -1 : int(at - siblings.begin());
}

CategoryNode *CategoryTree::addNode(CategoryNode *parent, const QString &key, const QString &text,
                                    const QString &image)
{
    if (parent && !contains(parent)) {
        qCWarning(lcCategoryTree) << "parent of" << text << "is not in this tree";
        return nullptr;
    }
    if (!key.isEmpty() && m_byKey.contains(key)) {
        qCWarning(lcCategoryTree) << "key already taken:" << key;
        return nullptr;
    }
    CategoryNode *owner = parentOrRoot(parent);
    if (owner->m_level + 1 >= kMaxDepth) {
        qCWarning(lcCategoryTree) << "nesting too deep for" << text;
        return nullptr;
    }
    const size_t position = sortedPosition(owner, text);
    Q_EMIT nodeAboutToBeAdded(parent, int(position));
    auto node = std::unique_ptr<CategoryNode>(new CategoryNode(this, owner, m_nextOrder++));
    node->m_key = key;
    node->m_text = text;
    node->m_image = image;
    CategoryNode *added = node.get();
    owner->m_children.insert(owner->m_children.begin() + qsizetype(position), std::move(node));
    indexSubtree(added);
    ++m_count;
    Q_EMIT nodeAdded(added);
    return added;
}

void CategoryTree::removeNode(CategoryNode *node)
{
    if (!contains(node))
        return;
    Q_EMIT nodeAboutToBeRemoved(node);
    CategoryNode *owner = node->m_parent;
    const int row = node->row();
    m_count -= unindexSubtree(node);
    owner->m_children.erase(owner->m_children.begin() + row);
    Q_EMIT nodeRemoved(visibleParent(owner), row);
}

bool CategoryTree::canMove(const CategoryNode *node, const CategoryNode *newParent) const
{
    if (!contains(node))
        return false;
    if (newParent && (!contains(newParent) || newParent == node || node->isAncestorOf(newParent)))
        return false;
    const int parentLevel = newParent ? newParent->m_level : -1;
    return parentLevel + 1 + subtreeHeight(node) < kMaxDepth;
}

bool CategoryTree::moveNode(CategoryNode *node, CategoryNode *newParent)
{
    if (!canMove(node, newParent))
        return false;
    CategoryNode *owner = parentOrRoot(newParent);
    if (owner != node->m_parent)
        moveWithin(node, owner, int(sortedPosition(owner, node->m_text)));
    return true;
}

void CategoryTree::moveWithin(CategoryNode *node, CategoryNode *newOwner, int newRow)
{
    Q_EMIT nodeAboutToBeMoved(node, visibleParent(newOwner), newRow);
    auto &oldSiblings = node->m_parent->m_children;
    const auto at = oldSiblings.begin() + node->row();
    std::unique_ptr<CategoryNode> taken = std::move(*at);
    oldSiblings.erase(at);
    unindexSubtree(node);
    node->m_parent = newOwner;
    newOwner->m_children.insert(newOwner->m_children.begin() + newRow, std::move(taken));
    indexSubtree(node);
    Q_EMIT nodeMoved(node);
}

void CategoryTree::changeText(CategoryNode *node, const QString &text)
{
    if (!contains(node))
        return;
    CategoryNode *owner = node->m_parent;
    const int row = node->row();
    // The siblings are still sorted with the old text in place, so the bound holds.
    int newRow = int(sortedPosition(owner, text));
    if (newRow > row)
        --newRow;
    // Views read the old row while they hear of the move.
    if (newRow != row)
        Q_EMIT nodeAboutToBeMoved(node, visibleParent(owner), newRow);
    unindexSubtree(node);
    node->m_text = text;
    if (newRow != row) {
        auto &siblings = owner->m_children;
        std::unique_ptr<CategoryNode> taken = std::move(siblings[size_t(row)]);
        siblings.erase(siblings.begin() + row);
        siblings.insert(siblings.begin() + newRow, std::move(taken));
    }
    indexSubtree(node);
    if (newRow != row)
        Q_EMIT nodeMoved(node);
    Q_EMIT nodeChanged(node);
}

void CategoryTree::nodeChangedInternally(CategoryNode *node)
{
    if (contains(node))
        Q_EMIT nodeChanged(node);
}

void CategoryTree::indexSubtree(CategoryNode *node)
{
    const CategoryNode *owner = node->m_parent;
    node->m_level = owner->m_level + 1;
    node->m_fullPath = node->m_level == 0 ? node->m_text : owner->m_fullPath + kSeparator + node->m_text;
    if (!node->m_key.isEmpty())
        m_byKey.insert(node->m_key, node);
    m_byPath[node->m_fullPath].emplace(node->m_order, node);
    for (const auto &child : node->m_children)
        indexSubtree(child.get());
}

int CategoryTree::unindexSubtree(CategoryNode *node)
{
    if (!node->m_key.isEmpty())
        m_byKey.remove(node->m_key);
    const auto found = m_byPath.find(node->m_fullPath);
    if (found != m_byPath.end()) {
        found->erase(node->m_order);
        if (found->empty())
            m_byPath.erase(found);
    }
    int nodes = 1;
    for (const auto &child : node->m_children)
        nodes += unindexSubtree(child.get());
    return nodes;
}

void CategoryTree::clear()
{
    Q_EMIT aboutToBeCleared();
    m_root->m_children.clear();
    m_byKey.clear();
    m_byPath.clear();
    m_count = 0;
    Q_EMIT cleared();
}

QList<CategoryNode *> CategoryTree::topLevelNodesInIndexOrder() const
{
    QList<CategoryNode *> nodes;
    nodes.reserve(topLevelCount());
    for (const auto &node : m_root->m_children)
        nodes.append(node.get());
    std::sort(nodes.begin(), nodes.end(),
              [](const CategoryNode *a, const CategoryNode *b) { return a->indexOrder() < b->indexOrder(); });
    return nodes;
}

CategoryNode *CategoryTree::findByKey(const QString &key) const
{
    return m_byKey.value(key, nullptr);
}

CategoryNode *CategoryTree::findFirstByPath(const QString &path) const
{
    const auto found = m_byPath.constFind(path);
    return found == m_byPath.constEnd() ? nullptr : found->begin()->second;
}
