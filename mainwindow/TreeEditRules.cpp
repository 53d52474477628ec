#include "TreeEditRules.h"

#include "CategoryTree.h"
#include "DialogAnswer.h"
#include "categoriesUtils.h"

namespace {
// Ask first, unless the user chose a fixed answer in the Outlook options.
constexpr qint32 kAskBeforeRemoving = 2;
} // namespace

CategoryNode *TreeEditRules::NewCategoryParent(CategoryNode *selected)
{
    if (!selected)
        return nullptr;
    return categoriesUtils::IsCategory(selected) ? selected : selected->parent();
}

QString TreeEditRules::NewCategoryText(const CategoryTree &tree, const CategoryNode *parent)
{
    const int count = parent ? parent->childCount() : tree.topLevelCount();
    int taken = 0;
    for (int i = 0; i < count; ++i) {
        const CategoryNode *sibling = parent ? parent->child(i) : tree.topLevelNode(i);
        if (sibling->text().startsWith(kNewCategory))
            ++taken;
    }
    return taken == 0 ? kNewCategory : kNewCategory + QStringLiteral(" (%1)").arg(taken);
}

QString TreeEditRules::RenameRefusal(const CategoryTree &tree, const CategoryNode &node, const QString &text)
{
    if (text.isEmpty())
        return kEmptyName;
    const auto match = categoriesUtils::FindSiblingByText(tree, node.parent(), text);
    if (match.found)
        return match.kind + QStringLiteral(" with that name already exists on this level.  Please use a "
                                           "different name.");
    return QString();
}

qint32 TreeEditRules::BindValue(const QString &newImage, bool isCategory, bool hasChildren,
                                const std::function<qint32()> &subDeletedInConfig, const Ask &ask)
{
    if (newImage.startsWith(QLatin1String("che")))
        return 1;
    const qint32 setting = subDeletedInConfig();
    if (setting != kAskBeforeRemoving)
        return setting;
    if (isCategory && !hasChildren)
        return 0;
    const QString question =
        isCategory ? QStringLiteral("Do you want to remove this category's articles from Outlook?")
                   : QStringLiteral("Do you want to remove the subscription's articles from Outlook?");
    return fromMessageBoxCode(ask(question)) == DialogAnswer::Yes ? 0 : 1;
}
