#pragma once

#include "SubscribeClient.h"

#include <QList>
#include <QString>

class CategoryNode;
class CategoryTree;
class QWidget;

// The commands on the tree that reach the engine: new category, rename, delete, check and
// move. Questions and refusals go through the standard dialogs with the window as owner, which
// also receives the status texts. A failing engine call throws quillon::EngineError; what was
// done before it stays, and the tree is saved either way.
class SubscriptionTreeCommands
{
public:
    SubscriptionTreeCommands(CategoryTree &tree, QWidget *owner);
    void SetClient(quillon::SubscribeClientPtr client) { m_client = std::move(client); }

    // Makes the next "New Category" under the selection; null when it could not be added.
    CategoryNode *NewCategory(CategoryNode *selected);
    // Applies a label edit, or shows why not. True when the node took the text.
    bool Rename(CategoryNode &node, const QString &text);
    // Removes the node and its subtree from the tree and the engine, after asking when ask is
    // set. Returns whether it was deleted; selectAfter receives the node to select then.
    bool Delete(CategoryNode &node, bool ask, CategoryNode **selectAfter);

    struct Binding
    {
        QList<qint32> ids;
        qint32 value = 1;
        bool nowChecked = true;
    };
    // Toggles the node's check and binds every subscription at and under it accordingly.
    Binding ToggleCheck(CategoryNode &node);
    // Re-makes the node under newParent (null: top) and tells the engine the new categories.
    CategoryNode *Move(CategoryNode &node, CategoryNode *newParent);

    void SaveTree();

private:
    [[nodiscard]] qint32 SubDeletedInConfig();
    void Bind(const Binding &binding);
    static CategoryNode *NodeBefore(CategoryTree &tree, const CategoryNode &node);

    CategoryTree &m_tree;
    QWidget *m_owner;
    quillon::SubscribeClientPtr m_client;
};
