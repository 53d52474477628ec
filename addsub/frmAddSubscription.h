#pragma once

#include "AddSubscriptionRequests.h"
#include "DialogAnswer.h"
#include "PendingActions.h"

#include <QDialog>
#include <QPointer>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <memory>

namespace Ui {
class frmAddSubscription;
}
class AddByUrlTab;
class BrowseTab;
class FeedListPanel;
class ImportTab;
class SearchTab;

// The one dialog through which feeds are added: by address (tab 0), from the directory (1), by
// search (2) or from an OPML file or another reader (3). It sends its requests, puts a status
// text in the host and closes; the answers reach the host.
class frmAddSubscription : public QDialog
{
    Q_OBJECT
public:
    enum Tab { UrlTab = 0, DirectoryTab = 1, SearchTabIndex = 2, ImportTabIndex = 3 };
    // Opens the preview of a feed; true when it was closed with its add command.
    using PreviewOpener = std::function<bool(QWidget *owner, const QString &title, const QString &url)>;

    explicit frmAddSubscription(QWidget *parent = nullptr);
    ~frmAddSubscription() override;

    void SetHost(QObject *host);
    // categories: the user's category paths, in the host's collection order.
    void Initialize(const QStringList &categories);
    [[nodiscard]] quillon::SubscribeClientPtr GetClient() const;
    // The subscription that already has this address, or 0.
    [[nodiscard]] qint32 GetSubscriptionID(const QString &url);
    void AddSub(const QString &title, const QString &url, const QString &category);
    [[nodiscard]] PendingActions::Counts CountActions() const { return m_pending.CountActions(); }
    void PerformActions(FeedListPanel &list, const QString &category);
    void AddSubsItemToCheckedList(const QModelIndex &row, bool checked);
    void AddSubsArrayToCheckedList(const QModelIndexList &rows, bool checked);
    void AddSubsToCheckedList(FeedListPanel &list, bool checked);
    Q_INVOKABLE void EventRootOPMLCallback(qint32 answer);
    Q_INVOKABLE void EventSubOPMLCallback(qint32 tag, qint32 answer);
    Q_INVOKABLE void EventSearchSourcesCallback(qint32 answer);
    Q_INVOKABLE void EventImportSourcesCallback(qint32 answer);
    void USMImportOPMLFile(const QString &path);
    void Dispose();

    void SetPreviewOpener(PreviewOpener opener) { m_openPreview = std::move(opener); }
    // Asks the pending-changes question; No keeps the actions.
    DialogAnswer AskPendingChanges();

private:
    void BuildTabs();
    void ConnectCommands();
    void OnOK();
    void OnTabChanged(int index);
    void OnSwitchTimer();
    void EnterTab(int index);
    void EnterDirectoryTab();
    void EnterSearchTab();
    void EnterImportTab();
    void LoadFile();
    void LoadImportSource();
    void PreviewFeed();
    void UpdateOkCaption();
    void RequestSubList(const QString &url);
    void ShowOutlines(FeedListPanel &list, quillon::Handle result, int folderRowType);
    [[nodiscard]] FeedListPanel *ListOfTab(int index) const;
    [[nodiscard]] QString ListCategory(int index) const;
    void RememberCategoryChoice(const QString &key, bool checked);
    [[nodiscard]] bool CategoryChoiceWanted(const QString &key);
    void SetStatus(const QString &text);

    std::unique_ptr<Ui::frmAddSubscription> ui;
    AddByUrlTab *m_urlTab = nullptr;
    BrowseTab *m_browseTab = nullptr;
    SearchTab *m_searchTab = nullptr;
    ImportTab *m_importTab = nullptr;
    QTimer m_switchTimer;
    QPointer<QObject> m_host;
    std::unique_ptr<AddSubscriptionRequests> m_requests;
    QStringList m_categories;
    PendingActions m_pending;
    PreviewOpener m_openPreview;
    int m_currentTab = UrlTab;
    int m_requestedTab = UrlTab;
    bool m_rootLoaded = false;
    bool m_switching = false;
};
