#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

class QWidget;

// An Outlook folder as the folder pickers return it.
struct OutlookFolder
{
    QString path;
    QString folderId;
};

// The Outlook "MAPI" namespace: what the settings editors and first run need of Outlook.
class IOutlook
{
public:
    virtual ~IOutlook() = default;
    // Full paths of the folders, e.g. "\\Personal Folders\\Feeds".
    [[nodiscard]] virtual QStringList FolderPaths() = 0;
    // Outlook's own folder chooser; nullopt when cancelled.
    [[nodiscard]] virtual std::optional<OutlookFolder> PickFolder(QWidget *owner) = 0;
    // Creates a personal-folders file and mounts it under displayName.
    virtual bool CreatePersonalFolders(const QString &filePath, const QString &displayName) = 0;
};

using OutlookPtr = std::shared_ptr<IOutlook>;
using OutlookProvider = std::function<OutlookPtr()>;

// The "MAPI" namespace, or null when Outlook cannot be reached (always, unless a provider
// was installed).
[[nodiscard]] OutlookPtr GetOutlookNamespace();
// Installs what GetOutlookNamespace asks; returns the previous provider.
OutlookProvider SetOutlookProvider(OutlookProvider provider);

// Brings a window to the front even when another program has the focus; true when it
// became the active window.
bool ForceForegroundWindow(QWidget *window);
