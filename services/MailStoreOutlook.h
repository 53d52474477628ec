#pragma once

#include "QLUtils.h"

// The mail store the delivery consumer fills (a Maildir tree), answering where Outlook's
// namespace is asked: its folders, a folder picker, and new stores for "personal folders".
class MailStoreOutlook : public IOutlook
{
public:
    explicit MailStoreOutlook(QString root) : m_root(std::move(root)) {}

    // QUILLON_MAILDIR when set, else the generic data folder's "Corvell/Mail": where
    // quillon-deliver puts mail unless told otherwise.
    [[nodiscard]] static QString defaultRoot();
    // Installs a provider for GetOutlookNamespace answering with the default store.
    static void Install();

    [[nodiscard]] QStringList FolderPaths() override;
    [[nodiscard]] std::optional<OutlookFolder> PickFolder(QWidget *owner) override;
    // A new, empty Maildir tree at filePath (a ".pst" ending is dropped).
    bool CreatePersonalFolders(const QString &filePath, const QString &displayName) override;

private:
    QString m_root;
};
