#pragma once

#include "MainWindowEntryPoints.h"

#include <QStringList>

class QObject;
class QWidget;

// How the main window opens the add-subscription wizard and the feed preview.
namespace AddSubscriptionEntry {

// The wizard and preview hooks of the main window.
[[nodiscard]] MainWindowEntryPoints EntryPoints();
// Opens the wizard over the main window, on the import tab with the file when one is given.
void OpenAddSubscription(QWidget *owner, const QString &importPath = QString());
// Shows the preview modally; true when it was closed with its add command.
bool OpenPreview(QWidget *owner, QObject *host, const QString &title, const QString &url, bool noAdd);

} // namespace AddSubscriptionEntry
