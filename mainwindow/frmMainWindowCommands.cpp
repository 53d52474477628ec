// The main window's commands that open other windows, and what the engine-message router asks
// of it.
#include "frmMainWindow.h"

#include "CLog.h"
#include "StandardDialogs.h"
#include "SubscriptionSettingsEditor.h"
#include "categoriesUtils.h"

using namespace categoriesUtils;

// ---- Commands that open other windows --------------------------------------------------

void frmMainWindow::NotAvailableYet(const QString &feature)
{
    ShowAlert(this, feature + QStringLiteral(" is not available yet."),
              QStringLiteral("This part of the program will come with a later version."));
}

void frmMainWindow::OnAdd()
{
    if (!CommitEdits(true))
        return;
    if (m_entryPoints.addSubscription)
        m_entryPoints.addSubscription(this);
    else
        NotAvailableYet(QStringLiteral("Adding subscriptions"));
}

void frmMainWindow::OnPreviewThisFeed()
{
    const CategoryNode *node = m_treeControl->CurrentNode();
    if (!IsSubscription(node))
        return;
    const QString url = m_treeControl->Facts().value(node->tag().toInt()).url;
    if (m_entryPoints.previewFeed)
        m_entryPoints.previewFeed(this, url);
    else
        NotAvailableYet(QStringLiteral("The feed preview"));
}

void frmMainWindow::OnPrefs()
{
    if (m_entryPoints.options)
        m_entryPoints.options(this);
    else
        NotAvailableYet(QStringLiteral("The options window"));
}

void frmMainWindow::ImportOPMLFile(const QString &path)
{
    if (m_entryPoints.importOpml) {
        m_entryPoints.importOpml(this, path);
        return;
    }
    CLog::SaveMessage(QStringLiteral("ImportOPML"), QStringLiteral("import not available yet"), path);
    SetStatusText(QStringLiteral("Importing OPML files is not available yet: ") + path);
}

void frmMainWindow::OnOK()
{
    // An apply that stopped (a warning was shown) keeps the window open to fix it.
    if (m_editor->Dirty() && !m_editor->ApplyEdits())
        return;
    close();
}

// ---- What the engine-message router asks of the window ---------------------------------

void frmMainWindow::CloseForEngineEnd()
{
    // Nothing can be saved any more: the window goes, and the program with it.
    m_forceClose = true;
    close();
}

void frmMainWindow::OpenImport(const QString &path)
{
    if (isMinimized())
        showNormal();
    ImportOPMLFile(path);
}

void frmMainWindow::OpenPreviewToAdd(const QString &title, const QString &url)
{
    if (isMinimized())
        showNormal();
    if (m_entryPoints.previewAndAdd)
        m_entryPoints.previewAndAdd(this, title, url);
    else
        NotAvailableYet(QStringLiteral("The feed preview"));
}

bool frmMainWindow::PlaceNewSubscription(qint32 id, const QString &title, const QString &url,
                                         const QString &category)
{
    return m_treeControl->PlaceNewSubscription(id, title, url, category);
}

void frmMainWindow::RefreshAndSelect(qint32 selectId)
{
    ++m_refreshCount;
    m_treeControl->Refresh(selectId);
}

void frmMainWindow::FollowChanges(const QList<qint32> &subscriptionIds)
{
    CategoryNode *current = m_treeControl->CurrentNode();
    const QString shownName = current ? current->text() : QString();
    if (!m_treeControl->FollowChanges(subscriptionIds))
        return;
    ShowDetails(current);
    // A new name reaches the settings page too, unless the user is editing there.
    if (current->text() != shownName && !m_editor->Dirty())
        LoadEditor(current);
}
