#pragma once

#include <QStyledItemDelegate>

// Draws a node's unread count beside its name, "(8)" in the link colour, as feed readers do.
// The count is painted, never part of the text: editing, sorting and the saved tree see the
// name alone. A name too long for the row is shortened so the count still shows.
class SubscriptionTreeDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    // " (8)" for 8 unread articles, empty for none.
    [[nodiscard]] static QString CountText(int unread);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};
