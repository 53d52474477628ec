#pragma once

#include "CategoryTree.h"
#include "ConfigHost.h"
#include "MainWindowEntryPoints.h"
#include "RefreshMerger.h"
#include "SubscribeClient.h"
#include "SubscriptionGridModel.h"
#include "SubscriptionListLoader.h"
#include "SubscriptionTreeCommands.h"

#include <QHash>
#include <QList>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <memory>

namespace Ui {
class frmMainWindow;
}

class CategoryNode;
class CategoryTreeModel;
class SubscriptionSettingsEditor;
class QAction;
class QModelIndex;

// The user's home window: the categories and subscriptions, their details and settings, the
// commands on them, and the reactions to engine messages and request answers, which reach it
// by handler name. It hosts the settings editor and the windows it opens.
class frmMainWindow : public QWidget, public ConfigHost
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
    void SetBusy(bool busy) override;
    [[nodiscard]] QStringList Categories() const override;

    void SetEntryPoints(MainWindowEntryPoints entryPoints) { m_entryPoints = std::move(entryPoints); }
    void SetModifierProbe(ModifierProbe probe) { m_modifierProbe = std::move(probe); }

    // The load steps; run once, when the window is first shown.
    void FormLoad();
    // Rebuilds the tree and grid from the saved categories and the engine. Throws
    // quillon::EngineError when the engine fails.
    void LoadSubscriptionsList();
    // Selects the subscription's node and shows its details and settings; false when absent.
    bool SelectRowByID(qint32 subscriptionId);
    [[nodiscard]] qint32 SelectedSubscriptionId() const;
    [[nodiscard]] const CategoryTree &Tree() const { return m_tree; }

    Q_INVOKABLE void SetStatusText(const QString &text) override;
    [[nodiscard]] QString StatusText() const;
    Q_INVOKABLE void EventSubscribeClientMessage(qint32 message);
    Q_INVOKABLE void HandleSubscribeClientCallback(qint32 message);
    Q_INVOKABLE void DoDisplayRefresh();
    // The tick's work: the deferred-refresh flush step.
    Q_INVOKABLE void Run();

    void SetIgnoreMessages(bool ignore) { m_refresh.SetIgnoreMessages(ignore); }
    void MaybeRefreshDisplay(qint32 selectId = -1);
    void QueueAnUpdate() { m_refresh.QueueAnUpdate(); }
    // True when a binding change is only the echo of one this window made; consumes the echo.
    [[nodiscard]] bool BindShouldBeIgnored(qint32 subscriptionId, const QString &bindFlag);
    void HandlePromptForDownload();
    void HandleLoginRequired(quillon::Handle result);
    void ImportOPMLFile(const QString &path);
    [[nodiscard]] int RefreshCount() const { return m_refreshCount; }

Q_SIGNALS:
    // The window is going away; the program ends with it.
    void Unloaded();

protected:
    void showEvent(QShowEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void SetupViews();
    void SetupGrid();
    void SetupSettingsEditor();
    void ConnectCommands();
    void ConnectTree();

    void LogLoadStep(const QString &label);
    void SizeWindow();
    void ShowMainWindowDetails();
    void SetSelectedItem(CategoryNode *lastPlaced);
    void RunFirstRunCheck();
    void RunFirstRunSetup();
    void SaveWindowSize();
    void SaveViewSetting(const QString &key, bool value);
    [[nodiscard]] QString ConfigSetting(const QString &key, const QString &defaultValue);

    // Steps 1-5 of the list load; returns the last subscription placed.
    CategoryNode *LoadList();
    void RefreshAndSelect(qint32 selectId);
    void RestoreExpansion(const CategoryNode *parent);
    void SelectNode(CategoryNode *node);
    void ApplySelection(CategoryNode *node);
    void OnCurrentChanged(const QModelIndex &current, const QModelIndex &previous);
    void OnExpansionChanged(const QModelIndex &index, bool expanded);
    [[nodiscard]] CategoryNode *CurrentNode() const;
    [[nodiscard]] CategoryNode *FindSubscriptionNode(qint32 subscriptionId) const;
    [[nodiscard]] CategoryNode *FindSelectedCategory(CategoryNode *parent) const;

    void ShowDetails(CategoryNode *node);
    void ShowSubscriptionDetails(const CategoryNode &node);
    void ShowCategoryDetails(const CategoryNode &node);
    // rebuild: list the rows again even when the subscription is already listed.
    void FillGrid(CategoryNode *node, bool rebuild = false);
    [[nodiscard]] QList<SubscriptionGridModel::Row> GridRows(const CategoryNode *category) const;
    void LoadEditor(CategoryNode *node);

    void OnAdd();
    void OnDelete();
    void OnNewCategory();
    void OnPreviewThisFeed();
    void OnPrefs();
    void OnAbout();
    void OnApply();
    void OnOK();
    void OnRenameRequested(CategoryNode *node, const QString &text);
    void OnCheckToggle(CategoryNode *node);
    void OnNodeDropped(CategoryNode *node, CategoryNode *newParent);
    void OnGridToggle(qint32 subscriptionId);
    void OnGridClicked(const QModelIndex &index);
    void OnTitleApplied(const QString &newTitle);
    // Runs a command that changes the engine with refreshes held back; a failure is logged
    // and shown. False when it failed.
    bool RunEngineCommand(const QString &what, const std::function<void()> &command);
    void NotAvailableYet(const QString &feature);
    [[nodiscard]] bool CommitEdits(bool allowCancel);

    void OnEngineTerminated();
    void OnImportOpml(quillon::Handle result);
    void OnPromptForDownload(quillon::Handle result);
    void OnSubscriptionAdded(quillon::Handle result);
    void OnBindingChanged(quillon::Handle result);
    [[nodiscard]] QList<qint32> MessageIds(quillon::Handle result);
    // Places a subscription that arrived while the window is open; added turns false when it
    // could not be placed.
    void AddSubscriptionNode(qint32 id, const QString &title, const QString &url, const QString &category,
                             bool &added);
    [[nodiscard]] QString SubscriptionTitle(qint32 subscriptionId);

    std::unique_ptr<Ui::frmMainWindow> ui;
    QPointer<QObject> m_host;
    quillon::SubscribeClientPtr m_client;
    CategoryTree m_tree;
    CategoryTreeModel *m_model = nullptr;
    SubscriptionGridModel *m_grid = nullptr;
    SubscriptionSettingsEditor *m_editor = nullptr;
    QAction *m_showUrlColumn = nullptr;
    SubscriptionTreeCommands m_commands;
    MainWindowEntryPoints m_entryPoints;
    ModifierProbe m_modifierProbe;
    RefreshMerger m_refresh;
    QHash<qint32, SubscriptionFacts> m_facts;
    // Bindings this window made, by subscription: whether the echo should say "TRUE".
    QHash<qint32, bool> m_ownBinds;
    QList<qint32> m_downloadQueue;
    QTimer m_sizeSaveTimer;
    QString m_selectedKey;
    // The category the grid lists; empty for every subscription.
    QString m_gridCategoryKey;
    int m_refreshCount = 0;
    int m_busyDepth = 0;
    bool m_formLoaded = false;
    bool m_loading = false;
    bool m_selecting = false;
    bool m_askingDownloads = false;
    bool m_forceClose = false;
    bool m_unloaded = false;
};
