#pragma once

#include "CategoryNode.h"

#include <QCollator>
#include <QHash>
#include <QList>
#include <QObject>
#include <QString>

#include <map>

// The tree of categories and subscriptions behind the main window's tree view: nodes with
// unique keys, children kept sorted by text, and lookups by key and by full path. It knows
// nothing of widgets; a view follows it through the signals below (a null parent means the
// top level, rows are positions among siblings).
class CategoryTree : public QObject
{
    Q_OBJECT
public:
    // Deeper nesting is refused, so corrupt saved text cannot exhaust memory or the stack.
    static constexpr int kMaxDepth = 1000;

    explicit CategoryTree(QObject *parent = nullptr);
    ~CategoryTree() override;

    // Adds a node under parent (null: top level) at its sorted place. Returns null when the
    // key is already taken, the parent is not of this tree, or the nesting gets too deep.
    // An empty key is allowed and never indexed.
    CategoryNode *addNode(CategoryNode *parent, const QString &key, const QString &text,
                          const QString &image = QString());
    // Removes the node with everything under it.
    void removeNode(CategoryNode *node);
    // Re-parents the node (null: top level) with its subtree; refuses a move into itself.
    bool moveNode(CategoryNode *node, CategoryNode *newParent);
    // Whether the node with its subtree may go under newParent (null: top level).
    [[nodiscard]] bool canMove(const CategoryNode *node, const CategoryNode *newParent) const;
    void clear();

    [[nodiscard]] int count() const { return m_count; }
    [[nodiscard]] int topLevelCount() const { return m_root->childCount(); }
    [[nodiscard]] CategoryNode *topLevelNode(int row) const { return m_root->child(row); }
    [[nodiscard]] QList<CategoryNode *> topLevelNodesInIndexOrder() const;

    [[nodiscard]] CategoryNode *findByKey(const QString &key) const;
    // The earliest added node whose full path equals the path exactly.
    [[nodiscard]] CategoryNode *findFirstByPath(const QString &path) const;
    [[nodiscard]] bool contains(const CategoryNode *node) const;

Q_SIGNALS:
    void nodeAboutToBeAdded(CategoryNode *parent, int row);
    void nodeAdded(CategoryNode *node);
    void nodeAboutToBeRemoved(CategoryNode *node);
    void nodeRemoved(CategoryNode *parent, int row);
    // newRow is the node's row among the new siblings once the move is done (a view's
    // beginMoveRows wants newRow + 1 as destination when a node moves down among its siblings).
    void nodeAboutToBeMoved(CategoryNode *node, CategoryNode *newParent, int newRow);
    void nodeMoved(CategoryNode *node);
    void nodeChanged(CategoryNode *node);
    void aboutToBeCleared();
    void cleared();

private:
    friend class CategoryNode;
    void nodeChangedInternally(CategoryNode *node);
    void changeText(CategoryNode *node, const QString &text);

    [[nodiscard]] bool lessThan(const QString &a, const QString &b) const;
    [[nodiscard]] size_t sortedPosition(const CategoryNode *parent, const QString &text) const;
    [[nodiscard]] int rowOf(const CategoryNode *node) const;
    [[nodiscard]] CategoryNode *parentOrRoot(CategoryNode *parent) const;
    [[nodiscard]] CategoryNode *visibleParent(CategoryNode *parentOrRoot) const;
    void moveWithin(CategoryNode *node, CategoryNode *newParent, int newRow);
    void indexSubtree(CategoryNode *node);
    // Returns how many nodes it took out of the indexes.
    int unindexSubtree(CategoryNode *node);

    std::unique_ptr<CategoryNode> m_root;
    QCollator m_collator;
    quint64 m_nextOrder = 1;
    int m_count = 0;
    QHash<QString, CategoryNode *> m_byKey;
    QHash<QString, std::map<quint64, CategoryNode *>> m_byPath;
};
