#include "AddSubscriptionEntry.h"

#include "CategoryTree.h"
#include "ClientAccess.h"
#include "categoriesUtils.h"
#include "frmAddSubscription.h"
#include "frmMainWindow.h"
#include "frmPreviewSubscription.h"
#include "OpmlImport.h"

#include <algorithm>
#include <functional>

namespace AddSubscriptionEntry {

QStringList CategoryPaths(const CategoryTree &tree)
{
    QList<const CategoryNode *> categories;
    std::function<void(const CategoryNode *)> visit = [&](const CategoryNode *node) {
        if (categoriesUtils::IsCategory(node))
            categories << node;
        for (int i = 0; i < node->childCount(); ++i)
            visit(node->child(i));
    };
    for (int i = 0; i < tree.topLevelCount(); ++i)
        visit(tree.topLevelNode(i));
    std::sort(categories.begin(), categories.end(),
              [](const CategoryNode *a, const CategoryNode *b) { return a->indexOrder() < b->indexOrder(); });
    QStringList paths;
    for (const CategoryNode *node : categories)
        paths << node->fullPath();
    return paths;
}

bool OpenPreview(QWidget *owner, QObject *host, const QString &title, const QString &url, bool noAdd)
{
    frmPreviewSubscription preview(owner);
    preview.InitWindow(ClientAccess::GetEngineClient(), host, title, url, noAdd);
    preview.exec();
    return preview.GetResults() == frmPreviewSubscription::kResultAdd;
}

void OpenAddSubscription(QWidget *owner, const QString &importPath)
{
    auto *window = qobject_cast<frmMainWindow *>(owner);
    frmAddSubscription wizard(owner);
    wizard.SetHost(owner);
    wizard.Initialize(window ? CategoryPaths(window->Tree()) : QStringList());
    wizard.SetPreviewOpener([owner](QWidget *parent, const QString &title, const QString &url) {
        return OpenPreview(parent, owner, title, url, false);
    });
    if (!importPath.isEmpty())
        wizard.USMImportOPMLFile(importPath);
    wizard.exec();
    wizard.Dispose();
}

MainWindowEntryPoints EntryPoints()
{
    MainWindowEntryPoints points;
    points.addSubscription = [](QWidget *owner) { OpenAddSubscription(owner); };
    points.previewFeed = [](QWidget *owner, const QString &url) { OpenPreview(owner, owner, url, url, true); };
    points.importOpml = [](QWidget *owner, const QString &path) {
        if (!OpmlImport::IsValidOPMLFile(path)) {
            OpmlImport::ShowNoFeedsFound(owner);
            return;
        }
        OpenAddSubscription(owner, path);
    };
    return points;
}

} // namespace AddSubscriptionEntry
