#include "AddSubscriptionEntry.h"

#include "ClientAccess.h"
#include "ConfigHost.h"
#include "OpmlImport.h"
#include "callbackSupport.h"
#include "frmAddSubscription.h"
#include "frmPreviewSubscription.h"

namespace AddSubscriptionEntry {

bool OpenPreview(QWidget *owner, QObject *host, const QString &title, const QString &url, bool noAdd)
{
    frmPreviewSubscription preview(owner);
    preview.InitWindow(ClientAccess::GetEngineClient(), host, title, url, noAdd);
    preview.exec();
    return preview.GetResults() == frmPreviewSubscription::kResultAdd;
}

void OpenAddSubscription(QWidget *owner, QObject *target, const QString &importPath)
{
    const auto *host = dynamic_cast<const ConfigHost *>(target);
    frmAddSubscription wizard(owner);
    wizard.SetHost(target);
    wizard.Initialize(host ? host->Categories() : QStringList());
    wizard.SetPreviewOpener([target](QWidget *parent, const QString &title, const QString &url) {
        return OpenPreview(parent, target, title, url, false);
    });
    if (!importPath.isEmpty())
        wizard.USMImportOPMLFile(importPath);
    wizard.exec();
}

MainWindowEntryPoints EntryPoints()
{
    MainWindowEntryPoints points;
    points.addSubscription = [](QWidget *owner) { OpenAddSubscription(owner, owner); };
    points.previewFeed = [](QWidget *owner, const QString &url) {
        OpenPreview(owner, owner, url, url, true);
    };
    points.previewAndAdd = [](QWidget *owner, const QString &title, const QString &url) {
        if (OpenPreview(owner, owner, title, url, false))
            callbackSupport::RequestAddSubscription(owner, ClientAccess::GetEngineClient(), title, url, true,
                                                    QString(), QString(), QString());
    };
    points.importOpml = [](QWidget *owner, const QString &path) {
        if (!OpmlImport::IsValidOPMLFile(path)) {
            OpmlImport::ShowNoFeedsFound(owner);
            return;
        }
        OpenAddSubscription(owner, owner, path);
    };
    return points;
}

} // namespace AddSubscriptionEntry
