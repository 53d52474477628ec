#pragma once

#include "RefreshMerger.h"
#include "SubscribeClient.h"

#include <QHash>
#include <QList>
#include <QString>

class ConfigHost;
class QWidget;

// What the router asks of the window whose messages it handles.
class EngineEventTarget
{
public:
    virtual ~EngineEventTarget() = default;
    // The engine is gone: close at once, saving nothing.
    virtual void CloseForEngineEnd() = 0;
    // The engine asks to import an OPML file.
    virtual void OpenImport(const QString &path) = 0;
    // The engine asks to preview a feed opened from the desktop, for the user to add it.
    virtual void OpenPreviewToAdd(const QString &title, const QString &url) = 0;
    // Places a subscription that arrived while the window is open; false when it could not.
    virtual bool PlaceNewSubscription(qint32 id, const QString &title, const QString &url,
                                      const QString &category) = 0;
    // Reloads the list and tree and selects the subscription (or keeps the selection).
    virtual void RefreshAndSelect(qint32 selectId) = 0;
    // Shows anew what the engine changed of these subscriptions (names, counts, statuses).
    virtual void FollowChanges(const QList<qint32> &subscriptionIds) = 0;
};

// The main window's reactions to engine messages and request answers: which message does
// what, the echoes of its own bindings, the download questions, and the merging of refreshes.
// Changes to subscriptions ("SubscriptionChanged") are gathered and shown together at the
// next flush, so a burst of them costs the window one pass per tick.
class EngineMessageRouter
{
public:
    // owner is the parent of the questions; host and target outlive the router.
    EngineMessageRouter(ConfigHost &host, EngineEventTarget &target, QWidget *owner);

    void SetClient(quillon::SubscribeClientPtr client) { m_client = std::move(client); }

    void EventSubscribeClientMessage(qint32 message);
    void HandleSubscribeClientCallback(qint32 message);

    // Refresh merging.
    void MaybeRefreshDisplay(qint32 selectId = -1);
    void DoDisplayRefresh();
    // The tick's flush step: a pending refresh, else the gathered subscription changes.
    void Run();
    void QueueAnUpdate() { m_refresh.QueueAnUpdate(); }
    void SetIgnoreMessages(bool ignore) { m_refresh.SetIgnoreMessages(ignore); }
    [[nodiscard]] bool IgnoringMessages() const { return m_refresh.IgnoringMessages(); }

    // Bindings this window made, whose echo is to be ignored.
    void NoteOwnBinds(const QList<qint32> &ids, bool nowChecked);
    void ForgetOwnBinds() { m_ownBinds.clear(); }
    // True when a binding change is only the echo of one this window made; consumes the echo.
    [[nodiscard]] bool BindShouldBeIgnored(qint32 subscriptionId, const QString &bindFlag);

    void HandlePromptForDownload();
    void HandleLoginRequired(quillon::Handle result);

private:
    void Dispatch(const QString &name, quillon::Handle result);
    void OnImportOpml(quillon::Handle result);
    void OnPromptForDownload(quillon::Handle result);
    void OnSubscriptionAdded(quillon::Handle result);
    void OnBindingChanged(quillon::Handle result);
    void OnSubscriptionChanged(quillon::Handle result);
    void Refresh(qint32 selectId);
    void FollowGatheredChanges();
    [[nodiscard]] QList<qint32> MessageIds(quillon::Handle result);
    [[nodiscard]] QString SubscriptionTitle(qint32 subscriptionId);

    ConfigHost &m_host;
    EngineEventTarget &m_target;
    QWidget *m_owner;
    quillon::SubscribeClientPtr m_client;
    RefreshMerger m_refresh;
    // Bindings this window made, by subscription: whether the echo should say "TRUE".
    QHash<qint32, bool> m_ownBinds;
    QList<qint32> m_downloadQueue;
    // Subscriptions the engine changed since the last flush, in the order first heard.
    QList<qint32> m_changed;
    bool m_askingDownloads = false;
};
