#pragma once

#include "QLUtils.h"
#include "SubscribeClient.h"

// The mail store the delivery consumer fills (a Maildir tree), answering where Outlook's
// namespace is asked: its folders, a folder picker, and new stores for "personal folders".
class MailStoreOutlook : public IOutlook
{
public:
    explicit MailStoreOutlook(QString root) : m_root(std::move(root)) {}

    // The delivery's "StoreRoot" once it made a new store, else QUILLON_MAILDIR when set, else
    // the generic data folder's "Corvell/Mail": where quillon-deliver puts mail.
    [[nodiscard]] static QString defaultRoot(quillon::SubscribeClient *client = nullptr);
    // Installs a provider for GetOutlookNamespace answering with that store; client gives the
    // engine client of the moment (none while the engine is away).
    static void Install(std::function<quillon::SubscribeClientPtr()> client = {});

    [[nodiscard]] QStringList FolderPaths() override;
    [[nodiscard]] std::optional<OutlookFolder> PickFolder(QWidget *owner) override;
    // A new, empty Maildir tree at filePath (a ".pst" ending is dropped).
    bool CreatePersonalFolders(const QString &filePath, const QString &displayName) override;

private:
    QString m_root;
};
