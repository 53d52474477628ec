#pragma once

#include <QString>

#include <functional>

class CategoryNode;
class CategoryTree;

// The rules behind the tree's commands, free of widgets and of the engine.
class TreeEditRules
{
public:
    static inline const QString kNewCategory = QStringLiteral("New Category");
    static inline const QString kEmptyName = QStringLiteral("Please enter some text for the new category.");

    // Where a new category goes for the selection: under a category, beside a subscription,
    // or at the top (null).
    [[nodiscard]] static CategoryNode *NewCategoryParent(CategoryNode *selected);
    // "New Category", or "New Category (n)" when n children of the parent already begin so.
    [[nodiscard]] static QString NewCategoryText(const CategoryTree &tree, const CategoryNode *parent);
    // Why the node may not take the text, or empty when it may.
    [[nodiscard]] static QString RenameRefusal(const CategoryTree &tree, const CategoryNode &node,
                                               const QString &text);

    // The value sent with each binding after a check change. newImage is the node's image
    // after the toggle; subDeletedInConfig reads the Outlook consumer's setting, only when it
    // matters; ask poses a yes/no question and answers 6 for yes.
    using Ask = std::function<int(const QString &question)>;
    [[nodiscard]] static qint32 BindValue(const QString &newImage, bool isCategory, bool hasChildren,
                                          const std::function<qint32()> &subDeletedInConfig, const Ask &ask);
};
