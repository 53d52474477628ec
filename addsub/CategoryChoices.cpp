#include "CategoryChoices.h"

#include <QComboBox>

namespace CategoryChoices {

void Fill(QComboBox &box, const QStringList &userCategories)
{
    // Sizing to the contents would measure every category's text on first show.
    box.setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box.setMinimumContentsLength(24);
    box.clear();
    box.addItem(QStringLiteral("Automatic"));
    box.addItem(QStringLiteral("New Subscriptions"));
    box.insertSeparator(2);
    box.addItems(userCategories);
    box.setCurrentIndex(0);
}

QString CategoryAt(int index, const QStringList &userCategories)
{
    if (index == 0)
        return QStringLiteral("Automatic");
    if (index == 1)
        return QStringLiteral("New Subscriptions");
    const int position = index - kFirstUserCategory + 1; // 1-based, as the collection counts
    if (index < kFirstUserCategory || position > userCategories.size())
        return QString();
    return userCategories.at(position - 1);
}

} // namespace CategoryChoices
