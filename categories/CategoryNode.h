#pragma once

#include <QString>

#include <memory>
#include <vector>

class CategoryTree;

// One node of the category tree: a category (empty Tag) or a subscription (Tag holds its
// identifier). Only its CategoryTree creates and destroys nodes; the setters report to the
// tree so it can keep its indexes and sort order and tell the views.
class CategoryNode
{
public:
    ~CategoryNode();
    CategoryNode(const CategoryNode &) = delete;
    CategoryNode &operator=(const CategoryNode &) = delete;

    [[nodiscard]] const QString &key() const { return m_key; }
    [[nodiscard]] const QString &text() const { return m_text; }
    [[nodiscard]] const QString &tag() const { return m_tag; }
    [[nodiscard]] const QString &image() const { return m_image; }
    [[nodiscard]] const QString &expandedImage() const { return m_expandedImage; }
    [[nodiscard]] const QString &selectedImage() const { return m_selectedImage; }
    [[nodiscard]] bool expanded() const { return m_expanded; }
    [[nodiscard]] bool selected() const { return m_selected; }
    [[nodiscard]] bool bold() const { return m_bold; }

    // Re-sorts the node among its siblings and renames the paths below it.
    void setText(const QString &text);
    void setTag(const QString &tag);
    void setImage(const QString &image);
    void setExpandedImage(const QString &image);
    void setSelectedImage(const QString &image);
    void setExpanded(bool expanded);
    void setSelected(bool selected);
    void setBold(bool bold);

    // Null at the top level.
    [[nodiscard]] CategoryNode *parent() const;
    [[nodiscard]] int childCount() const { return int(m_children.size()); }
    [[nodiscard]] CategoryNode *child(int row) const;
    [[nodiscard]] CategoryNode *firstChild() const { return child(0); }
    // Position among its siblings, which are sorted by text.
    [[nodiscard]] int row() const;
    // Texts from the top level down to this node, joined by "~~~".
    [[nodiscard]] const QString &fullPath() const { return m_fullPath; }
    // Nesting level, 0 at the top; independent of what the texts hold.
    [[nodiscard]] int level() const { return m_level; }
    // Rises with every node added to the tree; the tree's "index order".
    [[nodiscard]] quint64 indexOrder() const { return m_order; }
    [[nodiscard]] CategoryTree *tree() const { return m_tree; }
    [[nodiscard]] bool isAncestorOf(const CategoryNode *other) const;

private:
    friend class CategoryTree;
    CategoryNode(CategoryTree *tree, CategoryNode *parent, quint64 order);
    void changed();

    CategoryTree *m_tree;
    CategoryNode *m_parent; // the tree's hidden root for top-level nodes
    quint64 m_order;
    int m_level = -1;
    QString m_key;
    QString m_text;
    QString m_tag;
    QString m_image;
    QString m_expandedImage;
    QString m_selectedImage;
    bool m_expanded = false;
    bool m_selected = false;
    bool m_bold = false;
    QString m_fullPath;
    std::vector<std::unique_ptr<CategoryNode>> m_children;
};
