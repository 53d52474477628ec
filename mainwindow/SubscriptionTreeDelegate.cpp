#include "SubscriptionTreeDelegate.h"

#include "CategoryTreeModel.h"

#include <QApplication>
#include <QPainter>

QString SubscriptionTreeDelegate::CountText(int unread)
{
    return unread > 0 ? QStringLiteral(" (%1)").arg(unread) : QString();
}

void SubscriptionTreeDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                                     const QModelIndex &index) const
{
    const QString count = CountText(index.data(CategoryTreeModel::UnreadCountRole).toInt());
    if (count.isEmpty()) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    QStyleOptionViewItem item = option;
    initStyleOption(&item, index);
    QStyle *style = item.widget ? item.widget->style() : QApplication::style();
    QFont countFont = item.font;
    countFont.setBold(true);
    const int countWidth = QFontMetrics(countFont).horizontalAdvance(count);
    const QRect textArea = style->subElementRect(QStyle::SE_ItemViewItemText, &item, item.widget);
    // The style pads the text by its margin on each side.
    const int margin = style->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, item.widget) + 1;
    const int room = std::max(0, textArea.width() - 2 * margin - countWidth);
    item.text = item.fontMetrics.elidedText(item.text, item.textElideMode, room);
    style->drawControl(QStyle::CE_ItemViewItem, &item, painter, item.widget);

    const int nameWidth = item.fontMetrics.horizontalAdvance(item.text);
    const QRect countArea(textArea.left() + margin + nameWidth, textArea.top(), countWidth,
                          textArea.height());
    const bool selected = item.state.testFlag(QStyle::State_Selected);
    painter->save();
    painter->setFont(countFont);
    painter->setPen(item.palette.color(selected ? QPalette::HighlightedText : QPalette::Link));
    painter->drawText(countArea, Qt::AlignLeft | Qt::AlignVCenter, count);
    painter->restore();
}

QSize SubscriptionTreeDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QSize size = QStyledItemDelegate::sizeHint(option, index);
    const QString count = CountText(index.data(CategoryTreeModel::UnreadCountRole).toInt());
    if (!count.isEmpty()) {
        QFont countFont = option.font;
        countFont.setBold(true);
        size.rwidth() += QFontMetrics(countFont).horizontalAdvance(count);
    }
    return size;
}
