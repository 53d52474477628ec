#include "SubscriptionTreeCommands.h"

#include "CategoryTree.h"
#include "ConsumerSettings.h"
#include "DialogAnswer.h"
#include "EngineNames.h"
#include "PropertyBag.h"
#include "StandardDialogs.h"
#include "TreeEditRules.h"
#include "callbackSupport.h"
#include "categoriesUtils.h"
#include "commonUtils.h"

#include <QMetaObject>
#include <QWidget>

using EngineNames::kNewsClass;

using namespace categoriesUtils;

namespace {
using EngineNames::kOutlookConsumer;
} // namespace

SubscriptionTreeCommands::SubscriptionTreeCommands(CategoryTree &tree, QWidget *owner)
    : m_tree(tree), m_owner(owner)
{
}

void SubscriptionTreeCommands::SaveTree()
{
    if (m_client)
        SaveCategoryTree(m_tree, *m_client);
}

CategoryNode *SubscriptionTreeCommands::NewCategory(CategoryNode *selected)
{
    CategoryNode *parent = TreeEditRules::NewCategoryParent(selected);
    const QString text = TreeEditRules::NewCategoryText(m_tree, parent);
    CategoryNode *node = m_tree.addNode(parent, MakeNodeKey(0), text);
    if (!node)
        return nullptr;
    InitCategoryNode(*node);
    SaveTree();
    return node;
}

bool SubscriptionTreeCommands::Rename(CategoryNode &node, const QString &text)
{
    if (text == node.text())
        return true;
    const QString refusal = TreeEditRules::RenameRefusal(m_tree, node, text);
    if (!refusal.isEmpty()) {
        ShowAlert(m_owner, refusal, QString());
        return false;
    }
    node.setText(text);
    SaveTree();
    if (!m_client)
        return true;
    if (IsSubscription(&node))
        SetConsumerSetting(*m_client, kOutlookConsumer, SubscriptionSpecificsSection(node.tag().toInt()),
                           QStringLiteral("FOLDERTITLE"), text);
    else
        // The subscriptions below keep their place on the next load only if their paths follow.
        ApplyCategoryToEngine(node, *m_client);
    return true;
}

CategoryNode *SubscriptionTreeCommands::NodeBefore(CategoryTree &tree, const CategoryNode &node)
{
    const int row = node.row();
    CategoryNode *parent = node.parent();
    if (row > 0)
        return parent ? parent->child(row - 1) : tree.topLevelNode(row - 1);
    if (parent)
        return parent;
    return tree.topLevelCount() > 1 ? tree.topLevelNode(1) : nullptr;
}

bool SubscriptionTreeCommands::Delete(CategoryNode &node, bool ask, CategoryNode **selectAfter)
{
    if (ask) {
        const QString question =
            IsCategory(&node)
                ? QStringLiteral("Are you sure you want to delete this category and all it's subscriptions?")
                : QStringLiteral("Are you sure you want to delete the selected subscription(s)?");
        if (fromMessageBoxCode(AskQuestion(m_owner, question, QString(), QStringLiteral("delete"))) !=
            DialogAnswer::Yes)
            return false;
    }
    CategoryNode *before = NodeBefore(m_tree, node);
    try {
        if (m_client)
            DeleteNodeTree(m_tree, &node, [this](qint32 id, const QString &title) {
                callbackSupport::RemoveSubscription(*m_client, id, title, m_owner);
            });
    } catch (...) {
        SaveTree();
        throw;
    }
    SaveTree();
    // The removals are done by now; their "Removing: " line goes once the event loop runs again.
    QMetaObject::invokeMethod(
        m_owner, [owner = m_owner] { callbackSupport::SetTargetStatusText(owner, QString()); },
        Qt::QueuedConnection);
    if (selectAfter)
        *selectAfter = before;
    return true;
}

qint32 SubscriptionTreeCommands::SubDeletedInConfig()
{
    const QString value =
        GetConsumerSetting(*m_client, QStringLiteral("SubDeletedInConfig"), QStringLiteral("2"),
                           kOutlookConsumer, EngineNames::kOutlookDefaults);
    // Only a number is a standing answer; anything else means ask, never a silent removal.
    bool isNumber = false;
    const qint32 number = value.trimmed().toInt(&isNumber);
    return isNumber ? number : 2;
}

SubscriptionTreeCommands::Binding SubscriptionTreeCommands::ToggleCheck(CategoryNode &node)
{
    Binding binding;
    const QString image = categoriesUtils::ToggleCheck(node);
    binding.nowChecked = image.startsWith(QLatin1String("che"));
    if (IsCategory(&node)) {
        for (const QString &tag : CollectSubscriptionIDs(node))
            binding.ids.append(tag.toInt());
    } else {
        binding.ids.append(node.tag().toInt());
    }
    binding.value = TreeEditRules::BindValue(
        image, IsCategory(&node), node.childCount() > 0, [this] { return SubDeletedInConfig(); },
        [this](const QString &question) {
            return AskQuestion(m_owner, question, QString(), QStringLiteral("unbind"));
        });
    try {
        Bind(binding);
    } catch (...) {
        SaveTree();
        throw;
    }
    SaveTree();
    return binding;
}

void SubscriptionTreeCommands::Bind(const Binding &binding)
{
    if (!m_client)
        return;
    for (const qint32 id : binding.ids) {
        if (id >= 1 && id != quillon::kMissing)
            m_client->BindItem(kOutlookConsumer, kNewsClass, id, binding.value);
    }
}

CategoryNode *SubscriptionTreeCommands::Move(CategoryNode &node, CategoryNode *newParent)
{
    CategoryNode *moved = CopyNodeTo(m_tree, node, newParent);
    if (!moved)
        return nullptr;
    try {
        if (m_client)
            ApplyCategoryToEngine(*moved, *m_client);
    } catch (...) {
        SaveTree();
        throw;
    }
    SaveTree();
    return moved;
}
