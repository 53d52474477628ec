#include "SubscriptionTreeController.h"

#include "CLog.h"
#include "CategoryTreeModel.h"
#include "DetailsPane.h"
#include "EngineMessageRouter.h"
#include "EngineNames.h"
#include "HandleGuard.h"
#include "ItemClass.h"
#include "PropertyBag.h"
#include "RegistrySettings.h"
#include "StandardDialogs.h"
#include "SubscriptionTreeView.h"
#include "categoriesUtils.h"
#include "commonUtils.h"

#include <QGuiApplication>
#include <QLoggingCategory>
#include <QScopedValueRollback>
#include <QSet>

Q_DECLARE_LOGGING_CATEGORY(lcMainWindow)

using namespace categoriesUtils;

SubscriptionTreeController::SubscriptionTreeController(CategoryTree &tree, SubscriptionTreeView *view,
                                                       EngineMessageRouter &router, QWidget *owner)
    : QObject(owner), m_tree(tree), m_view(view), m_router(router), m_owner(owner),
      m_model(new CategoryTreeModel(tree, this)), m_commands(tree, owner),
      m_modifierProbe([] { return QGuiApplication::queryKeyboardModifiers(); })
{
    m_model->SetFacts(&m_facts);
    m_view->setModel(m_model);
    connect(m_view->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &SubscriptionTreeController::OnCurrentChanged);
    connect(m_view, &QTreeView::expanded, this,
            [this](const QModelIndex &at) { OnExpansionChanged(at, true); });
    connect(m_view, &QTreeView::collapsed, this,
            [this](const QModelIndex &at) { OnExpansionChanged(at, false); });
    connect(m_view, &SubscriptionTreeView::CheckToggleRequested, this,
            &SubscriptionTreeController::ToggleCheck);
    connect(m_view, &SubscriptionTreeView::DeleteRequested, this, &SubscriptionTreeController::Delete);
    connect(m_view, &SubscriptionTreeView::NodeDropped, this, &SubscriptionTreeController::Drop);
    connect(m_model, &CategoryTreeModel::RenameRequested, this, &SubscriptionTreeController::Rename);
}

void SubscriptionTreeController::SetClient(quillon::SubscribeClientPtr client)
{
    m_client = client;
    m_commands.SetClient(std::move(client));
}

void SubscriptionTreeController::SaveTree()
{
    try {
        m_commands.SaveTree();
    } catch (const std::exception &e) {
        qCWarning(lcMainWindow) << "could not keep the categories:" << e.what();
    }
}

// ---- The list and the selection --------------------------------------------------------

CategoryNode *SubscriptionTreeController::LoadList()
{
    if (!m_client)
        return nullptr;
    const QScopedValueRollback<bool> loading(m_loading, true);
    SubscriptionListLoader::Result result;
    m_model->BeginBulkChange();
    try {
        result = SubscriptionListLoader(*m_client, m_tree).Load();
    } catch (...) {
        m_model->EndBulkChange();
        throw;
    }
    m_model->EndBulkChange();
    m_facts = std::move(result.facts);
    m_router.ForgetOwnBinds();
    m_selectedKey.clear();
    RestoreExpansion(nullptr);
    if (result.savedTreeDropped)
        m_commands.SaveTree();
    return result.lastPlaced;
}

void SubscriptionTreeController::Refresh(qint32 selectId)
{
    if (!m_client)
        return;
    // A refresh cannot be cancelled: the question offers only Yes and No.
    CommitEdits(false);
    const qint32 previousId = SelectedSubscriptionId();
    const CategoryNode *current = CurrentNode();
    const QString previousCategory = IsCategory(current) ? current->fullPath() : QString();
    CategoryNode *lastPlaced = LoadList();
    if (quillon::isValidId(selectId) && SelectRowByID(selectId))
        return;
    if (previousId && SelectRowByID(previousId))
        return;
    CategoryNode *category = previousCategory.isEmpty() ? nullptr : FindNodeByPath(m_tree, previousCategory);
    SelectNode(IsCategory(category) ? category : lastPlaced);
}

void SubscriptionTreeController::RestoreExpansion(const CategoryNode *parent)
{
    const int count = parent ? parent->childCount() : m_tree.topLevelCount();
    for (int i = 0; i < count; ++i) {
        const CategoryNode *node = parent ? parent->child(i) : m_tree.topLevelNode(i);
        if (!IsCategory(node) || !node->expanded())
            continue;
        m_view->setExpanded(m_model->IndexOf(node), true);
        RestoreExpansion(node);
    }
}

CategoryNode *SubscriptionTreeController::CurrentNode() const
{
    return m_view->CurrentNode();
}

qint32 SubscriptionTreeController::SelectedSubscriptionId() const
{
    const CategoryNode *node = CurrentNode();
    return IsSubscription(node) ? node->tag().toInt() : 0;
}

bool SubscriptionTreeController::SelectRowByID(qint32 subscriptionId)
{
    CategoryNode *node =
        quillon::isValidId(subscriptionId) ? FindSubscriptionNode(m_tree, subscriptionId) : nullptr;
    if (!node)
        return false;
    SelectNode(node);
    return true;
}

void SubscriptionTreeController::SelectNode(CategoryNode *node)
{
    const QModelIndex at = m_model->IndexOf(node);
    {
        // Whoever selects here has already dealt with pending edits.
        const QScopedValueRollback<bool> guard(m_selecting, true);
        if (at.isValid())
            m_view->setCurrentIndex(at);
        else
            m_view->selectionModel()->clear();
    }
    if (at.isValid())
        m_view->scrollTo(at);
    ApplySelection(node);
}

void SubscriptionTreeController::MoveCurrentTo(qint32 subscriptionId)
{
    if (CategoryNode *node = FindSubscriptionNode(m_tree, subscriptionId))
        m_view->setCurrentIndex(m_model->IndexOf(node));
}

void SubscriptionTreeController::OnCurrentChanged(const QModelIndex &current, const QModelIndex &previous)
{
    if (m_selecting)
        return;
    if (!CommitEdits(true)) {
        // Cancel keeps the old selection and its edits.
        const QScopedValueRollback<bool> back(m_selecting, true);
        m_view->setCurrentIndex(previous);
        return;
    }
    ApplySelection(m_model->NodeAt(current));
}

void SubscriptionTreeController::ApplySelection(CategoryNode *node)
{
    if (CategoryNode *old = m_tree.findByKey(m_selectedKey); old && old != node)
        old->setSelected(false);
    m_selectedKey = node ? node->key() : QString();
    if (node)
        node->setSelected(true);
    Q_EMIT NodeShown(node);
}

void SubscriptionTreeController::OnExpansionChanged(const QModelIndex &index, bool expanded)
{
    CategoryNode *node = m_model->NodeAt(index);
    if (!node || node->expanded() == expanded)
        return;
    node->setExpanded(expanded);
    if (!m_loading)
        RunEngineCommand(QStringLiteral("expand"), [this] { m_commands.SaveTree(); });
}

bool SubscriptionTreeController::FollowChanges(const QList<qint32> &subscriptionIds)
{
    if (!m_client)
        return false;
    const CategoryNode *current = CurrentNode();
    bool currentChanged = false;
    bool renamed = false;
    const QHash<qint32, CategoryNode *> nodes = SubscriptionNodes(subscriptionIds);
    for (const qint32 id : subscriptionIds) {
        CategoryNode *node = nodes.value(id);
        if (!node)
            continue;
        const QString before = node->text();
        if (!FollowChange(*node))
            continue;
        renamed = renamed || node->text() != before;
        // A category's details add up the subscriptions under it.
        currentChanged = currentChanged || node == current || (current && current->isAncestorOf(node));
    }
    if (renamed)
        Q_EMIT RowsChanged();
    return currentChanged;
}

QHash<qint32, CategoryNode *> SubscriptionTreeController::SubscriptionNodes(const QList<qint32> &ids) const
{
    // One walk of the tree, however many subscriptions a burst of updates names.
    const QSet<qint32> wanted(ids.cbegin(), ids.cend());
    QHash<qint32, CategoryNode *> found;
    QList<CategoryNode *> pending;
    for (int i = 0; i < m_tree.topLevelCount(); ++i)
        pending.append(m_tree.topLevelNode(i));
    while (!pending.isEmpty()) {
        CategoryNode *node = pending.takeLast();
        if (IsSubscription(node) && wanted.contains(node->tag().toInt()))
            found.insert(node->tag().toInt(), node);
        for (int i = 0; i < node->childCount(); ++i)
            pending.append(node->child(i));
    }
    return found;
}

bool SubscriptionTreeController::FollowChange(CategoryNode &node)
{
    const qint32 id = node.tag().toInt();
    try {
        HandleGuard item(*m_client, m_client->GetItemBag(EngineNames::kNewsClass, id, 0));
        const SubscriptionFacts facts = SubscriptionListLoader::FactsOf(*m_client, item.get());
        if (DetailsPane::IsFailure(facts.lastStatus) && facts.lastStatus != m_facts.value(id).lastStatus)
            CLog::SaveMessage(QStringLiteral("Subscription update failed"), node.text(), facts.lastStatus);
        m_facts.insert(id, facts);
        // The same rule as a load: a name the user gave ("FOLDERTITLE") stays.
        const QString text = SubscriptionListLoader::TextOf(*m_client, item.get());
        if (text != node.text()) {
            const QScopedValueRollback<bool> guard(m_selecting, true);
            node.setText(text);
        }
    } catch (const quillon::EngineError &) {
        return false; // removed meanwhile: the next reload drops its node
    }
    m_model->FactsChanged(&node);
    return true;
}

bool SubscriptionTreeController::PlaceNewSubscription(qint32 id, const QString &title, const QString &url,
                                                      const QString &category)
{
    // Another window's add may already have been placed by a refresh.
    if (FindSubscriptionNode(m_tree, id))
        return true;
    const QScopedValueRollback<bool> guard(m_selecting, true);
    if (!SubscriptionListLoader::Place(m_tree, id, title, category, false))
        return false;
    m_facts.insert(id, {url, quillon::kMissing, quillon::kMissing});
    Q_EMIT RowsChanged();
    return true;
}

// ---- Commands --------------------------------------------------------------------------

void SubscriptionTreeController::RunEngineCommand(const QString &what, const std::function<void()> &command)
{
    if (!m_client)
        return;
    const bool wasIgnoring = m_router.IgnoringMessages();
    m_router.SetIgnoreMessages(true);
    // The view moves its current node while nodes go; the command selects afterwards.
    const QScopedValueRollback<bool> guard(m_selecting, true);
    try {
        command();
    } catch (const std::exception &e) {
        CLog::SaveMessage(QStringLiteral("Main window: ") + what, QString::fromUtf8(e.what()));
        ShowAlert(m_owner, QStringLiteral("The change could not be completed."), QString::fromUtf8(e.what()));
    }
    m_router.SetIgnoreMessages(wasIgnoring);
}

void SubscriptionTreeController::NewCategory()
{
    if (!CommitEdits(true))
        return;
    CategoryNode *made = nullptr;
    RunEngineCommand(QStringLiteral("new category"), [&] { made = m_commands.NewCategory(CurrentNode()); });
    if (!made)
        return;
    SelectNode(made);
    m_view->setFocus();
    m_view->edit(m_model->IndexOf(made));
}

void SubscriptionTreeController::Rename(CategoryNode *node, const QString &text)
{
    bool renamed = false;
    RunEngineCommand(QStringLiteral("rename"), [&] { renamed = m_commands.Rename(*node, text); });
    if (renamed && node->key() == m_selectedKey) {
        Q_EMIT NodeRenamed(node);
        m_view->scrollTo(m_model->IndexOf(node));
    }
}

void SubscriptionTreeController::Delete()
{
    CategoryNode *node = CurrentNode();
    if (!node || !CommitEdits(true))
        return;
    const bool suppressed =
        TextToBool(GetRegistrySetting(QStringLiteral("Quill On"), EngineNames::kConfigConsumer,
                                      QStringLiteral("SupressDeleteWarnings"), QString()));
    const bool ctrlHeld = m_modifierProbe().testFlag(Qt::ControlModifier);
    CategoryNode *after = nullptr;
    bool deleted = false;
    RunEngineCommand(QStringLiteral("delete"),
                     [&] { deleted = m_commands.Delete(*node, !suppressed && !ctrlHeld, &after); });
    SelectNode(deleted ? after : CurrentNode());
}

void SubscriptionTreeController::ToggleCheck(CategoryNode *node)
{
    if (!node)
        return;
    RunEngineCommand(QStringLiteral("check"), [&] {
        const SubscriptionTreeCommands::Binding binding = m_commands.ToggleCheck(*node);
        m_router.NoteOwnBinds(binding.ids, binding.nowChecked);
    });
    // The grid shows the same checks.
    Q_EMIT RowsChanged();
}

void SubscriptionTreeController::Drop(CategoryNode *node, CategoryNode *newParent)
{
    if (!node || !CommitEdits(true))
        return;
    CategoryNode *moved = nullptr;
    RunEngineCommand(QStringLiteral("move"), [&] { moved = m_commands.Move(*node, newParent); });
    if (!moved)
        return;
    if (newParent)
        m_view->expand(m_model->IndexOf(newParent));
    SelectNode(moved);
}
