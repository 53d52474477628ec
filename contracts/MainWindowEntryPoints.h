#pragma once

#include <QString>

#include <functional>

class QWidget;

// The windows the main window opens that other parts of the program provide. A hook left
// empty means the feature is not there yet: the window says so instead of doing nothing.
struct MainWindowEntryPoints
{
    std::function<void(QWidget *owner)> addSubscription;
    std::function<void(QWidget *owner, const QString &url)> previewFeed;
    std::function<void(QWidget *owner)> options;
    std::function<void(QWidget *owner, const QString &path)> importOpml;
    // A feed opened from the desktop: previewed, and added when the user asks.
    std::function<void(QWidget *owner, const QString &title, const QString &url)> previewAndAdd;
    // Runs once, on the first start for this user.
    std::function<void(QWidget *owner)> firstRunSetup;
};
