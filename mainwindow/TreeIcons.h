#pragma once

#include <QIcon>
#include <QString>

// The tree's check-state pictures, drawn once at run time so they follow the palette and
// stay sharp on high-density screens. A node's image name picks the picture.
class TreeIcons
{
public:
    // "checked", "unchecked", "checked_folder", "unchecked_folder", "partial_folder"; any other
    // name shows a plain folder for a category and an unchecked box for a subscription.
    [[nodiscard]] static QIcon ForImage(const QString &imageName, bool isCategory);

private:
    enum class Mark { None, Checked, Unchecked, Partial };
    [[nodiscard]] static QIcon Make(bool folder, Mark mark);
};
