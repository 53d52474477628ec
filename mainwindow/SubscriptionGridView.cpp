#include "SubscriptionGridView.h"

#include "CategoryTree.h"
#include "SubscriptionGridModel.h"
#include "categoriesUtils.h"

#include <QAction>
#include <QHeaderView>

using namespace categoriesUtils;

namespace {
QList<CategoryNode *> Subscriptions(const CategoryTree &tree, const CategoryNode *category)
{
    if (category)
        return CollectSubscriptions(*category);
    QList<CategoryNode *> subscriptions;
    for (int i = 0; i < tree.topLevelCount(); ++i) {
        CategoryNode *top = tree.topLevelNode(i);
        if (IsSubscription(top))
            subscriptions.append(top);
        else
            subscriptions.append(CollectSubscriptions(*top));
    }
    return subscriptions;
}
} // namespace

SubscriptionGridView::SubscriptionGridView(QWidget *parent)
    : QTableView(parent), m_model(new SubscriptionGridModel(this))
{
    setModel(m_model);
    QHeaderView *header = horizontalHeader();
    header->setSectionResizeMode(QHeaderView::Interactive);
    header->resizeSection(SubscriptionGridModel::ColumnEnabled, 64);
    header->resizeSection(SubscriptionGridModel::ColumnTitle, 280);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    setColumnHidden(SubscriptionGridModel::ColumnUrl, true);
    // The header's menu turns the address column on and off.
    m_showUrlColumn = new QAction(QStringLiteral("Show Subscription URL"), header);
    m_showUrlColumn->setObjectName(QStringLiteral("actShowUrlColumn"));
    m_showUrlColumn->setCheckable(true);
    header->setContextMenuPolicy(Qt::ActionsContextMenu);
    header->addAction(m_showUrlColumn);
    connect(m_showUrlColumn, &QAction::toggled, this, [this](bool shown) {
        setColumnHidden(SubscriptionGridModel::ColumnUrl, !shown);
        Q_EMIT UrlColumnToggled(shown);
    });
    connect(m_model, &SubscriptionGridModel::EnabledToggleRequested, this,
            &SubscriptionGridView::EnabledToggleRequested);
    connect(this, &QTableView::clicked, this, &SubscriptionGridView::OnClicked);
    connect(this, &QTableView::activated, this, &SubscriptionGridView::OnClicked);
}

void SubscriptionGridView::SetSource(const CategoryTree *tree, const QHash<qint32, SubscriptionFacts> *facts)
{
    m_tree = tree;
    m_facts = facts;
}

void SubscriptionGridView::SetUrlColumnShown(bool shown)
{
    m_showUrlColumn->setChecked(shown);
    setColumnHidden(SubscriptionGridModel::ColumnUrl, !shown);
}

void SubscriptionGridView::Fill(const CategoryNode *node, bool rebuild)
{
    const qint32 selectedId = IsSubscription(node) ? node->tag().toInt() : 0;
    const bool listed = selectedId && m_model->RowOf(selectedId) >= 0;
    if (!listed) {
        const CategoryNode *category = IsSubscription(node) ? node->parent() : node;
        m_categoryKey = category ? category->key() : QString();
    }
    if ((!listed || rebuild) && m_tree && m_facts) {
        const CategoryNode *category = m_categoryKey.isEmpty() ? nullptr : m_tree->findByKey(m_categoryKey);
        QList<SubscriptionGridModel::Row> rows;
        for (const CategoryNode *subscription : Subscriptions(*m_tree, category)) {
            const qint32 id = subscription->tag().toInt();
            rows.append({id, subscription->text(), m_facts->value(id).url,
                         subscription->image().startsWith(QLatin1String("che"))});
        }
        m_model->SetRows(rows);
    }
    const int row = selectedId ? m_model->RowOf(selectedId) : -1;
    if (row >= 0)
        selectRow(row);
    else
        clearSelection();
}

void SubscriptionGridView::OnClicked(const QModelIndex &index)
{
    if (index.isValid() && index.column() != SubscriptionGridModel::ColumnEnabled)
        Q_EMIT SubscriptionChosen(m_model->IdAt(index.row()));
}
