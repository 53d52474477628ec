#pragma once

#include <QList>
#include <QString>

// What the main window has selected, as the settings editor needs it.
struct EditorSelection
{
    enum class Kind { None, Subscription, Category } kind = Kind::None;
    QString title;                 // node text
    QString url;                   // subscription only
    QList<qint32> subscriptionIds; // the subscription, or every one under the category
};
