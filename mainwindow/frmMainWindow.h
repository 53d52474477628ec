#pragma once

#include "CategoryTree.h"
#include "ConfigHost.h"
#include "EngineMessageRouter.h"
#include "MainWindowEntryPoints.h"
#include "SubscribeClient.h"
#include "SubscriptionTreeController.h"

#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <memory>

namespace Ui {
class frmMainWindow;
}

class CategoryNode;
class SubscriptionSettingsEditor;

// The user's home window: the category tree with the grid, details pane and settings page
// beside it, and the commands on them. Engine messages and request answers reach it by
// handler name and are handed to its EngineMessageRouter. It hosts the settings page and the
// windows it opens.
class frmMainWindow : public QWidget, public ConfigHost, private EngineEventTarget
{
    Q_OBJECT
public:
    // Which modifier keys are down right now; tests stand in for the keyboard.
    using ModifierProbe = std::function<Qt::KeyboardModifiers()>;

    explicit frmMainWindow(QWidget *parent = nullptr);
    ~frmMainWindow() override;

    // The host contract.
    void SetHost(QObject *host) override { m_host = host; }
    void SetClient(quillon::SubscribeClientPtr client) override;
    [[nodiscard]] QString GetConsumerID() const override;
    [[nodiscard]] QString GetNewsSubscriptionType() const override;
    void OnStatusChange() override;
    void EditConfiguration(qint32 subscriptionId, bool &handled) override;
    void SetHotHelp(const QString &text, const QString &warning) override;
    Q_INVOKABLE void SetStatusText(const QString &text) override;
    void SetBusy(bool busy) override;
    [[nodiscard]] QStringList Categories() const override;

    void SetEntryPoints(MainWindowEntryPoints entryPoints) { m_entryPoints = std::move(entryPoints); }
    void SetModifierProbe(ModifierProbe probe) { m_treeControl->SetModifierProbe(std::move(probe)); }

    // The load steps; run once, when the window is first shown.
    void FormLoad();
    // Opens the engine's log window while "ShowLogWindow" is on, closes it when it is off.
    void FollowLogWindowSetting();
    // Rebuilds the tree and grid from the saved categories and the engine. Throws
    // quillon::EngineError when the engine fails.
    void LoadSubscriptionsList();
    // Selects the subscription's node and shows its details and settings; false when absent.
    bool SelectRowByID(qint32 subscriptionId);
    [[nodiscard]] qint32 SelectedSubscriptionId() const;
    [[nodiscard]] const CategoryTree &Tree() const { return m_tree; }
    [[nodiscard]] QString StatusText() const;
    void ImportOPMLFile(const QString &path);

    // The handlers callbacks call by name, and the tick's work (the deferred-refresh flush).
    Q_INVOKABLE void EventSubscribeClientMessage(qint32 message)
    {
        m_router.EventSubscribeClientMessage(message);
    }
    Q_INVOKABLE void HandleSubscribeClientCallback(qint32 message)
    {
        m_router.HandleSubscribeClientCallback(message);
    }
    Q_INVOKABLE void DoDisplayRefresh() { m_router.DoDisplayRefresh(); }
    Q_INVOKABLE void Run();

    // The router's steps, for the start-up module and tests.
    void SetIgnoreMessages(bool ignore) { m_router.SetIgnoreMessages(ignore); }
    void MaybeRefreshDisplay(qint32 selectId = -1) { m_router.MaybeRefreshDisplay(selectId); }
    void QueueAnUpdate() { m_router.QueueAnUpdate(); }
    [[nodiscard]] bool BindShouldBeIgnored(qint32 subscriptionId, const QString &bindFlag)
    {
        return m_router.BindShouldBeIgnored(subscriptionId, bindFlag);
    }
    void HandlePromptForDownload() { m_router.HandlePromptForDownload(); }
    void HandleLoginRequired(quillon::Handle result) { m_router.HandleLoginRequired(result); }
    [[nodiscard]] int RefreshCount() const { return m_refreshCount; }

Q_SIGNALS:
    // The window is going away; the program ends with it.
    void Unloaded();

protected:
    void showEvent(QShowEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    // What the router asks of the window.
    void CloseForEngineEnd() override;
    void OpenImport(const QString &path) override;
    void OpenPreviewToAdd(const QString &title, const QString &url) override;
    bool PlaceNewSubscription(qint32 id, const QString &title, const QString &url,
                              const QString &category) override;
    void RefreshAndSelect(qint32 selectId) override;
    void FollowChanges(const QList<qint32> &subscriptionIds) override;

    void SetupViews();
    void ConnectCommands();

    void ShowRememberedView();
    void RunFirstRunCheck();
    void SaveWindowSize();
    void SaveViewSetting(const QString &key, bool value);

    // The selection moved: details, grid and settings page follow it.
    void ShowNode(CategoryNode *node);
    void ShowDetails(CategoryNode *node);
    void LoadEditor(CategoryNode *node);
    [[nodiscard]] bool CommitEdits(bool allowCancel);

    void OnAdd();
    void OnPreviewThisFeed();
    void OnPrefs();
    void OnOK();
    void NotAvailableYet(const QString &feature);

    std::unique_ptr<Ui::frmMainWindow> ui;
    QPointer<QObject> m_host;
    QPointer<QWidget> m_logWindow;
    quillon::SubscribeClientPtr m_client;
    CategoryTree m_tree;
    EngineMessageRouter m_router;
    SubscriptionTreeController *m_treeControl = nullptr;
    SubscriptionSettingsEditor *m_editor = nullptr;
    MainWindowEntryPoints m_entryPoints;
    QTimer m_sizeSaveTimer;
    int m_refreshCount = 0;
    int m_busyDepth = 0;
    bool m_formLoaded = false;
    bool m_loading = false;
    bool m_forceClose = false;
    bool m_unloaded = false;
};
