#include "categoriesUtils.h"

#include "CategoryTreeSerializer.h"
#include "ConsumerSettings.h"
#include "EngineNames.h"
#include "HandleGuard.h"
#include "PromptSeam.h"
#include "PropertyBag.h"

#include <QLoggingCategory>

#include <algorithm>

using EngineNames::kNewsClass;

Q_LOGGING_CATEGORY(lcCategories, "corvell.categories")

namespace categoriesUtils {

namespace {
const QString kChecked = QStringLiteral("checked");
const QString kUnchecked = QStringLiteral("unchecked");
const QString kCheckedFolder = QStringLiteral("checked_folder");
const QString kUncheckedFolder = QStringLiteral("unchecked_folder");
const QString kPartialFolder = QStringLiteral("partial_folder");

enum class CheckState { Checked, Unchecked, Partial };

// Only the first three letters of an image name carry the state.
CheckState stateOf(const QString &image)
{
    if (image.startsWith(QLatin1StringView("unc")))
        return CheckState::Unchecked;
    if (image.startsWith(QLatin1StringView("par")))
        return CheckState::Partial;
    return CheckState::Checked;
}

qsizetype countSeparators(const QString &path)
{
    qsizetype count = 0;
    for (qsizetype at = path.indexOf(kPathSeparator); at >= 0; at = path.indexOf(kPathSeparator, at + 3))
        ++count;
    return count;
}

// The subscription identifier in the node's Tag, or 0 when it holds none.
qint32 subscriptionId(const CategoryNode &node)
{
    bool ok = false;
    const qint32 id = node.tag().toInt(&ok);
    return ok && id > 0 && id != quillon::kMissing ? id : 0;
}

void tellUser(const QString &text)
{
    Prompt prompt;
    prompt.kind = PromptKind::MessageBox;
    prompt.mainText = text;
    PromptSeam::Ask(prompt);
}

void updateEngineCategory(quillon::SubscribeClient &client, const CategoryNode &subscription,
                          const QString &category)
{
    const qint32 id = subscriptionId(subscription);
    if (id == 0) {
        qCWarning(lcCategories) << "no subscription identifier in" << subscription.key();
        return;
    }
    HandleGuard bag(client, client.NewBag());
    client.SetStringValue(bag.get(), QStringLiteral("CATEGORY"), category);
    client.UpdateItem(kNewsClass, id, bag.get());
}

void collectCategoryPaths(const CategoryNode &node, QList<CategoryPath> &paths)
{
    if (!IsCategory(&node))
        return;
    paths.append({node.key(), node.fullPath()});
    for (int i = 0; i < node.childCount(); ++i)
        collectCategoryPaths(*node.child(i), paths);
}
} // namespace

int NodeKind(const CategoryNode *node)
{
    if (!node)
        return KindNone;
    return node->tag().isEmpty() ? KindCategory : KindSubscription;
}

bool IsCategory(const CategoryNode *node)
{
    return NodeKind(node) == KindCategory;
}

bool IsSubscription(const CategoryNode *node)
{
    return NodeKind(node) == KindSubscription;
}

namespace {
qint64 &keyCounter()
{
    static qint64 counter = 0;
    return counter;
}
} // namespace

QString MakeNodeKey(int flag)
{
    const qint64 number = ++keyCounter();
    return (flag == 1 ? QStringLiteral("sub_") : QStringLiteral("cat_")) + QString::number(number);
}

void AdvanceKeyCounterPast(qint32 number)
{
    keyCounter() = std::max(keyCounter(), qint64(number));
}

qint32 KeyNumber(const QString &key)
{
    return key.mid(4).toInt();
}

CategoryNode *FindNodeByPath(const CategoryTree &tree, const QString &path)
{
    return tree.findFirstByPath(path);
}

CategoryNode *AddCategoryFromSubscription(CategoryTree &tree, const QString &path)
{
    if (path.isEmpty())
        return nullptr;
    CategoryNode *current = nullptr;
    QString pathSoFar;
    for (const QString &part : path.split(kPathSeparator)) {
        pathSoFar = pathSoFar.isEmpty() ? part : pathSoFar + kPathSeparator + part;
        if (CategoryNode *existing = FindNodeByPath(tree, pathSoFar)) {
            current = existing;
            continue;
        }
        CategoryNode *added = tree.addNode(current, MakeNodeKey(0), part);
        if (!added) {
            tellUser(QStringLiteral("Error in AddCategoryFromSubscription"));
            return nullptr;
        }
        InitCategoryNode(*added);
        current = added;
    }
    return current;
}

void InitCategoryNode(CategoryNode &node)
{
    node.setBold(true);
    const QString &image = node.image();
    if (image != kCheckedFolder && image != kPartialFolder && image != kUncheckedFolder)
        node.setImage(kCheckedFolder);
}

QString ToggleCheck(CategoryNode &node)
{
    const bool turnOn = stateOf(node.image()) != CheckState::Checked;
    if (IsCategory(&node))
        node.setImage(turnOn ? kCheckedFolder : kUncheckedFolder);
    else
        node.setImage(turnOn ? kChecked : kUnchecked);
    SetChildrenFromParent(node);
    UpdateParentState(node);
    return node.image();
}

void SetChildrenFromParent(CategoryNode &node)
{
    const bool on = node.image() == kCheckedFolder;
    for (int i = 0; i < node.childCount(); ++i) {
        CategoryNode &child = *node.child(i);
        if (IsCategory(&child))
            child.setImage(on ? kCheckedFolder : kUncheckedFolder);
        else
            child.setImage(on ? kChecked : kUnchecked);
        SetChildrenFromParent(child);
    }
}

void UpdateParentState(CategoryNode &node)
{
    // A category shows what the user last clicked, not a summary of its children.
    Q_UNUSED(node);
}

void DeleteNodeTree(CategoryTree &tree, CategoryNode *node, const SubscriptionRemover &removeSubscription)
{
    if (!tree.contains(node))
        return;
    while (CategoryNode *child = node->firstChild())
        DeleteNodeTree(tree, child, removeSubscription);
    if (IsSubscription(node)) {
        if (const qint32 id = subscriptionId(*node))
            removeSubscription(id, node->text());
        else
            qCWarning(lcCategories) << "removing node" << node->key() << "without a subscription identifier";
    }
    tree.removeNode(node);
}

QList<CategoryNode *> CollectSubscriptions(const CategoryNode &node)
{
    QList<CategoryNode *> found;
    for (int i = 0; i < node.childCount(); ++i) {
        CategoryNode *child = node.child(i);
        if (IsSubscription(child))
            found.append(child);
        else
            found.append(CollectSubscriptions(*child));
    }
    return found;
}

QStringList CollectSubscriptionIDs(const CategoryNode &node)
{
    QStringList ids;
    for (const CategoryNode *subscription : CollectSubscriptions(node))
        ids.append(subscription->tag());
    return ids;
}

QList<CategoryPath> CollectCategoryPaths(const CategoryTree &tree, const CategoryNode *node)
{
    QList<CategoryPath> paths;
    if (!node) {
        for (int i = 0; i < tree.topLevelCount(); ++i)
            collectCategoryPaths(*tree.topLevelNode(i), paths);
        return paths;
    }
    for (int i = 0; i < node->childCount(); ++i)
        collectCategoryPaths(*node->child(i), paths);
    return paths;
}

SiblingMatch FindSiblingByText(const CategoryTree &tree, const CategoryNode *node, const QString &text)
{
    const CategoryNode *parent = node;
    int first = 0;
    if (node && !IsCategory(node)) {
        parent = node->parent();
        first = node->row();
    }
    const int count = parent ? parent->childCount() : tree.topLevelCount();
    for (int i = first; i < count; ++i) {
        const CategoryNode *candidate = parent ? parent->child(i) : tree.topLevelNode(i);
        if (candidate->text() == text)
            return {true,
                    IsCategory(candidate) ? QStringLiteral("Category") : QStringLiteral("Subscription")};
    }
    return {};
}

int NodeDepth(const CategoryNode &node)
{
    return int(countSeparators(node.fullPath()));
}

QString PathDisplayText(const QString &path)
{
    const qsizetype last = path.lastIndexOf(kPathSeparator);
    const QString name = last < 0 ? path : path.mid(last + kPathSeparator.size());
    return QString(2 * countSeparators(path), QLatin1Char(' ')) + QStringLiteral("+ ") + name;
}

QString SerializeCategoryTree(const CategoryTree &tree)
{
    return CategoryTreeSerializer::write(tree);
}

QString SaveCategoryTree(const CategoryTree &tree, quillon::SubscribeClient &client)
{
    const QString text = SerializeCategoryTree(tree);
    SetConsumerSetting(client, EngineNames::kConfigConsumer, QString(), kSavedCategoriesKey, text);
    return text;
}

bool LoadCategoryTree(CategoryTree &tree, const QString &text)
{
    const auto result = CategoryTreeSerializer::read(tree, text);
    if (!result.message.isEmpty())
        tellUser(result.message);
    return result.ok;
}

void ApplyCategoryToEngine(const CategoryNode &node, quillon::SubscribeClient &client)
{
    if (IsSubscription(&node)) {
        const CategoryNode *parent = node.parent();
        updateEngineCategory(client, node, parent ? parent->fullPath() : QString());
        return;
    }
    for (const CategoryNode *subscription : CollectSubscriptions(node))
        updateEngineCategory(client, *subscription, subscription->parent()->fullPath());
}

CategoryNode *CopyNodeTo(CategoryTree &tree, CategoryNode &node, CategoryNode *newParent)
{
    if (!tree.canMove(&node, newParent)) {
        qCWarning(lcCategories) << "cannot move" << node.key() << "there";
        return nullptr;
    }
    // Copied categories get "sub_" keys and copied subscriptions "cat_"; nothing reads it.
    CategoryNode *copy =
        tree.addNode(newParent, MakeNodeKey(IsCategory(&node) ? 1 : 0), node.text(), node.image());
    if (!copy)
        return nullptr;
    copy->setTag(node.tag());
    // A moved category must still look like one.
    copy->setBold(node.bold());
    while (CategoryNode *child = node.firstChild()) {
        if (!tree.moveNode(child, copy)) {
            qCWarning(lcCategories) << "could not carry" << child->key() << "over; the old node stays";
            return copy;
        }
    }
    tree.removeNode(&node);
    return copy;
}

CategoryNode *FindSubscriptionNode(const CategoryTree &tree, qint32 subscriptionId)
{
    const QString tag = QString::number(subscriptionId);
    QList<CategoryNode *> pending;
    for (int i = 0; i < tree.topLevelCount(); ++i)
        pending.append(tree.topLevelNode(i));
    while (!pending.isEmpty()) {
        CategoryNode *node = pending.takeLast();
        if (node->tag() == tag)
            return node;
        for (int i = 0; i < node->childCount(); ++i)
            pending.append(node->child(i));
    }
    return nullptr;
}

CategoryNode *FindSelectedCategory(const CategoryTree &tree, const CategoryNode *parent)
{
    const int count = parent ? parent->childCount() : tree.topLevelCount();
    for (int i = 0; i < count; ++i) {
        CategoryNode *node = parent ? parent->child(i) : tree.topLevelNode(i);
        if (!IsCategory(node))
            continue;
        if (node->selected())
            return node;
        if (CategoryNode *found = FindSelectedCategory(tree, node))
            return found;
    }
    return nullptr;
}

QStringList CategoryPathsInIndexOrder(const CategoryTree &tree)
{
    QList<const CategoryNode *> categories;
    for (const CategoryPath &category : CollectCategoryPaths(tree, nullptr))
        categories.append(tree.findByKey(category.key));
    std::sort(categories.begin(), categories.end(),
              [](const CategoryNode *a, const CategoryNode *b) { return a->indexOrder() < b->indexOrder(); });
    QStringList paths;
    for (const CategoryNode *category : std::as_const(categories))
        paths.append(category->fullPath());
    return paths;
}

} // namespace categoriesUtils
