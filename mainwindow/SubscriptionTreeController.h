#pragma once

#include "SubscribeClient.h"
#include "SubscriptionListLoader.h"
#include "SubscriptionTreeCommands.h"

#include <QHash>
#include <QObject>

#include <functional>

class CategoryNode;
class CategoryTree;
class CategoryTreeModel;
class EngineMessageRouter;
class QModelIndex;
class SubscriptionTreeView;

// The tree side of the main window: loading the list into the tree, the selection and the
// open categories, and the commands on nodes. Each command holds refreshes back while it
// changes the engine; pending edits are offered for saving before the selection moves.
class SubscriptionTreeController : public QObject
{
    Q_OBJECT
public:
    // Asks to save or drop pending edits; false when the user cancelled.
    using EditGate = std::function<bool(bool allowCancel)>;
    using ModifierProbe = std::function<Qt::KeyboardModifiers()>;

    SubscriptionTreeController(CategoryTree &tree, SubscriptionTreeView *view, EngineMessageRouter &router,
                               QWidget *owner);

    void SetClient(quillon::SubscribeClientPtr client);
    void SetEditGate(EditGate gate) { m_editGate = std::move(gate); }
    void SetModifierProbe(ModifierProbe probe) { m_modifierProbe = std::move(probe); }
    [[nodiscard]] QHash<qint32, SubscriptionFacts> &Facts() { return m_facts; }

    // Rebuilds the tree from the saved categories and the engine; returns the last
    // subscription placed. Throws quillon::EngineError.
    CategoryNode *LoadList();
    // Reloads after engine changes and selects the subscription, else the one selected before,
    // else the category selected before, else the last placed.
    void Refresh(qint32 selectId);
    void SelectNode(CategoryNode *node);
    // Makes the subscription the tree's current node as a click would, pending edits first.
    void MoveCurrentTo(qint32 subscriptionId);
    bool SelectRowByID(qint32 subscriptionId);
    [[nodiscard]] CategoryNode *CurrentNode() const;
    [[nodiscard]] qint32 SelectedSubscriptionId() const;
    // Reads again what the engine changed of these subscriptions (name, counts, last status)
    // and shows it in place, without a reload. True when one of them is the selected node.
    bool FollowChanges(const QList<qint32> &subscriptionIds);
    // Places a subscription that arrived while the window is open; false when it could not.
    bool PlaceNewSubscription(qint32 id, const QString &title, const QString &url, const QString &category);
    void SaveTree();

    void NewCategory();
    void Rename(CategoryNode *node, const QString &text);
    void Delete();
    void ToggleCheck(CategoryNode *node);
    void Drop(CategoryNode *node, CategoryNode *newParent);

Q_SIGNALS:
    // The node (or nothing) is now the selection: show it.
    void NodeShown(CategoryNode *node);
    // The selected node took a new name.
    void NodeRenamed(CategoryNode *node);
    // Subscriptions were placed or their checks changed.
    void RowsChanged();

private:
    void RestoreExpansion(const CategoryNode *parent);
    [[nodiscard]] QHash<qint32, CategoryNode *> SubscriptionNodes(const QList<qint32> &ids) const;
    // False when the subscription is gone from the engine.
    bool FollowChange(CategoryNode &node);
    void ApplySelection(CategoryNode *node);
    void OnCurrentChanged(const QModelIndex &current, const QModelIndex &previous);
    void OnExpansionChanged(const QModelIndex &index, bool expanded);
    bool CommitEdits(bool allowCancel) { return !m_editGate || m_editGate(allowCancel); }
    // Runs a command that changes the engine with refreshes held back; a failure is logged
    // and shown.
    void RunEngineCommand(const QString &what, const std::function<void()> &command);

    CategoryTree &m_tree;
    SubscriptionTreeView *m_view;
    EngineMessageRouter &m_router;
    QWidget *m_owner;
    CategoryTreeModel *m_model;
    SubscriptionTreeCommands m_commands;
    quillon::SubscribeClientPtr m_client;
    EditGate m_editGate;
    ModifierProbe m_modifierProbe;
    QHash<qint32, SubscriptionFacts> m_facts;
    QString m_selectedKey;
    bool m_loading = false;
    bool m_selecting = false;
};
