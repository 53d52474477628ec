#include "CategoryNode.h"

#include "CategoryTree.h"

CategoryNode::CategoryNode(CategoryTree *tree, CategoryNode *parent, quint64 order)
    : m_tree(tree), m_parent(parent), m_order(order)
{
}

CategoryNode::~CategoryNode() = default;

void CategoryNode::changed()
{
    m_tree->nodeChangedInternally(this);
}

void CategoryNode::setText(const QString &text)
{
    if (text != m_text)
        m_tree->changeText(this, text);
}

void CategoryNode::setTag(const QString &tag)
{
    if (tag == m_tag)
        return;
    m_tag = tag;
    changed();
}

void CategoryNode::setImage(const QString &image)
{
    if (image == m_image)
        return;
    m_image = image;
    changed();
}

void CategoryNode::setExpandedImage(const QString &image)
{
    if (image == m_expandedImage)
        return;
    m_expandedImage = image;
    changed();
}

void CategoryNode::setSelectedImage(const QString &image)
{
    if (image == m_selectedImage)
        return;
    m_selectedImage = image;
    changed();
}

void CategoryNode::setExpanded(bool expanded)
{
    if (expanded == m_expanded)
        return;
    m_expanded = expanded;
    changed();
}

void CategoryNode::setSelected(bool selected)
{
    if (selected == m_selected)
        return;
    m_selected = selected;
    changed();
}

void CategoryNode::setBold(bool bold)
{
    if (bold == m_bold)
        return;
    m_bold = bold;
    changed();
}

CategoryNode *CategoryNode::parent() const
{
    return m_parent && m_parent->m_level >= 0 ? m_parent : nullptr;
}

CategoryNode *CategoryNode::child(int row) const
{
    if (row < 0 || row >= childCount())
        return nullptr;
    return m_children[size_t(row)].get();
}

int CategoryNode::row() const
{
    return m_parent ? m_tree->rowOf(this) : -1;
}

bool CategoryNode::isAncestorOf(const CategoryNode *other) const
{
    for (const CategoryNode *n = other ? other->m_parent : nullptr; n; n = n->m_parent) {
        if (n == this)
            return true;
    }
    return false;
}
