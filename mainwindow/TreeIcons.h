#pragma once

#include <QColor>
#include <QIcon>
#include <QString>

// The tree's check-state pictures, drawn once at run time so they follow the palette and
// stay sharp on high-density screens. A node's image name picks the picture.
class TreeIcons
{
public:
    // The text colour and badge of a subscription whose last update failed.
    static inline const QColor kFailedColor = QColor(0xB4, 0x1E, 0x1E);

    // "checked", "unchecked", "checked_folder", "unchecked_folder", "partial_folder"; any other
    // name shows a plain folder for a category and an unchecked box for a subscription. A
    // failed subscription's box carries a red badge.
    [[nodiscard]] static QIcon ForImage(const QString &imageName, bool isCategory, bool failed = false);

private:
    enum class Mark { None, Checked, Unchecked, Partial };
    [[nodiscard]] static QIcon Make(bool folder, Mark mark, bool failed);
};
