#pragma once

#include "CategoryTree.h"
#include "SubscribeClient.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

class QObject;

// The rules of the category tree: node kinds, check states and how they spread, keys,
// category paths, deletion, the saved form and the engine's "CATEGORY" property.
namespace categoriesUtils {

enum NodeKindValue : int { KindNone = 0, KindCategory = 1, KindSubscription = 2 };

inline const QString kPathSeparator = QStringLiteral("~~~");
inline const QString kSavedCategoriesKey = QStringLiteral("Saved_Categories");
// Beside it: the last saved text that read whole, and the last one that did not.
inline const QString kLastReadableCategoriesKey = QStringLiteral("Saved_Categories_LastReadable");
inline const QString kUnreadableCategoriesKey = QStringLiteral("Saved_Categories_Unreadable");

// Decided by the Tag alone: empty for a category, the identifier for a subscription.
[[nodiscard]] int NodeKind(const CategoryNode *node);
[[nodiscard]] bool IsCategory(const CategoryNode *node);
[[nodiscard]] bool IsSubscription(const CategoryNode *node);

// One running number for the whole process. Flag 1 gives "sub_" keys, anything else "cat_";
// callers pass the flag they like, so the prefix says nothing about the node's kind.
[[nodiscard]] QString MakeNodeKey(int flag);
// The running number of a key (its text after the four-character prefix); 0 when none.
[[nodiscard]] qint32 KeyNumber(const QString &key);
// Raises the running number to at least the given one, so keys made from now on cannot meet
// the keys a saved tree brought back from an earlier run.
void AdvanceKeyCounterPast(qint32 number);

// The earliest added node, of either kind, whose full path is exactly the path.
[[nodiscard]] CategoryNode *FindNodeByPath(const CategoryTree &tree, const QString &path);
// The deepest category of the path, making the missing levels. Null (after telling the user)
// when a level cannot be added.
CategoryNode *AddCategoryFromSubscription(CategoryTree &tree, const QString &path);
// Categories are bold and carry one of the three folder images ("checked_folder" if not).
void InitCategoryNode(CategoryNode &node);

// Flips the node between checked and unchecked (partial counts as unchecked) and gives the
// whole subtree the same state. Returns the node's new image.
QString ToggleCheck(CategoryNode &node);
void SetChildrenFromParent(CategoryNode &node);
// A category's state is never recomputed from its children; kept as the hook callers use.
void UpdateParentState(CategoryNode &node);

// Removes the node and everything under it, handing each subscription (id and title) to
// removeSubscription first. When that throws, the rest is left in place.
using SubscriptionRemover = std::function<void(qint32 subscriptionId, const QString &title)>;
void DeleteNodeTree(CategoryTree &tree, CategoryNode *node, const SubscriptionRemover &removeSubscription);

// Subscription nodes under the node at any depth: children in order, each category's
// subscriptions before those of its later siblings.
[[nodiscard]] QList<CategoryNode *> CollectSubscriptions(const CategoryNode &node);
[[nodiscard]] QStringList CollectSubscriptionIDs(const CategoryNode &node);

struct CategoryPath
{
    QString key;
    QString path;
};
// The subscription's node, or null.
[[nodiscard]] CategoryNode *FindSubscriptionNode(const CategoryTree &tree, qint32 subscriptionId);
// The first category marked selected under the node (null: the whole tree), depth first.
[[nodiscard]] CategoryNode *FindSelectedCategory(const CategoryTree &tree,
                                                 const CategoryNode *parent = nullptr);

// Every category's full path, in the order the categories were added to the tree.
[[nodiscard]] QStringList CategoryPathsInIndexOrder(const CategoryTree &tree);

// Categories under the node (null: the whole tree), each before its children.
[[nodiscard]] QList<CategoryPath> CollectCategoryPaths(const CategoryTree &tree, const CategoryNode *node);

struct SiblingMatch
{
    bool found = false;
    QString kind; // "Category" or "Subscription"
};
// Looks for the text, with case, among the top level (null), a category's children, or a
// subscription and its later siblings.
[[nodiscard]] SiblingMatch FindSiblingByText(const CategoryTree &tree, const CategoryNode *node,
                                             const QString &text);

[[nodiscard]] int NodeDepth(const CategoryNode &node);
// "News~~~Tech" gives "  + Tech", for lists that show the categories as indented lines.
[[nodiscard]] QString PathDisplayText(const QString &path);

// The category part of the tree as text, without storing it.
[[nodiscard]] QString SerializeCategoryTree(const CategoryTree &tree);
// Serialises the tree and stores it as the engine-held setting; returns the text. A failing
// engine call throws quillon::EngineError.
QString SaveCategoryTree(const CategoryTree &tree, quillon::SubscribeClient &client);
// Rebuilds the tree from saved text; a text that cannot be read is reported to the user and
// what was read before the error stays. Returns whether all of it was read.
bool LoadCategoryTree(CategoryTree &tree, const QString &text);

// After a move: brings the "CATEGORY" of the subscription, or of every subscription under
// the category, up to date in the engine. Throws quillon::EngineError when an update fails.
void ApplyCategoryToEngine(const CategoryNode &node, quillon::SubscribeClient &client);
// Re-makes the node under newParent (null: top level) with its children and removes the
// old one. Returns the new node, or null when the move is impossible.
CategoryNode *CopyNodeTo(CategoryTree &tree, CategoryNode &node, CategoryNode *newParent);

} // namespace categoriesUtils
