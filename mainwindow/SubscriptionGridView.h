#pragma once

#include "SubscriptionListLoader.h"

#include <QHash>
#include <QTableView>

class CategoryNode;
class CategoryTree;
class QAction;
class SubscriptionGridModel;

// The grid beside the tree: the subscriptions of the chosen category with their delivery
// check, title and, when the header's menu shows it, address.
class SubscriptionGridView : public QTableView
{
    Q_OBJECT
public:
    explicit SubscriptionGridView(QWidget *parent = nullptr);

    // The tree and facts the rows come from; both outlive the view.
    void SetSource(const CategoryTree *tree, const QHash<qint32, SubscriptionFacts> *facts);
    // Lists the node's category (a subscription: its parent's; null: every subscription) and
    // selects the subscription. A subscription already listed only moves the selection, unless
    // rebuild asks for the rows again.
    void Fill(const CategoryNode *node, bool rebuild = false);
    void SetUrlColumnShown(bool shown);

Q_SIGNALS:
    // A row was clicked or activated outside its check.
    void SubscriptionChosen(qint32 subscriptionId);
    void EnabledToggleRequested(qint32 subscriptionId);
    // The user turned the address column on or off.
    void UrlColumnToggled(bool shown);

private:
    void OnClicked(const QModelIndex &index);

    SubscriptionGridModel *m_model = nullptr;
    QAction *m_showUrlColumn = nullptr;
    const CategoryTree *m_tree = nullptr;
    const QHash<qint32, SubscriptionFacts> *m_facts = nullptr;
    // The category listed; empty for every subscription.
    QString m_categoryKey;
};
