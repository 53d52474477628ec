#pragma once

#include "MainWindowEntryPoints.h"

#include <QStringList>

class QObject;
class QWidget;

// How the windows open the add-subscription wizard and the feed preview.
namespace AddSubscriptionEntry {

// The wizard and preview hooks of the main window.
[[nodiscard]] MainWindowEntryPoints EntryPoints();
// Opens the wizard over owner, on the import tab with the file when one is given. The answers
// (the added subscriptions, the status line, the categories offered) go to target, a
// ConfigHost: the options window opens the wizard over itself for the main window.
void OpenAddSubscription(QWidget *owner, QObject *target, const QString &importPath = QString());
// Shows the preview modally; true when it was closed with its add command.
bool OpenPreview(QWidget *owner, QObject *host, const QString &title, const QString &url, bool noAdd);

} // namespace AddSubscriptionEntry
