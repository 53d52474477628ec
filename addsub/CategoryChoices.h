#pragma once

#include <QString>
#include <QStringList>

class QComboBox;

// The category drop-downs of the add-subscription wizard: "Automatic", "New Subscriptions", a
// separator, then the user's categories in the main window's collection order.
namespace CategoryChoices {

inline constexpr int kFirstUserCategory = 3;

void Fill(QComboBox &box, const QStringList &userCategories);
// The category string of a position: the shown text for 0 and 1, "" for the separator and the
// user's category at (index - 3 + 1) of the 1-based collection from 3 on.
[[nodiscard]] QString CategoryAt(int index, const QStringList &userCategories);

} // namespace CategoryChoices
