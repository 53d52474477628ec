#include "EngineMessageRouter.h"

#include "CLog.h"
#include "ConfigHost.h"
#include "ConsumerSettings.h"
#include "EngineNames.h"
#include "HandleGuard.h"
#include "HandlerNames.h"
#include "ItemClass.h"
#include "PropertyBag.h"
#include "SubscriptionListLoader.h"
#include "commonUtils.h"
#include "frmEnclosureWarning.h"
#include "frmUserNameAndPassword.h"

#include <QScopedValueRollback>

using EngineNames::kNewsClass;

namespace {
using EngineNames::kConfigConsumer;
const QString kMediaConsumer = QStringLiteral("MEDIACONSUMER");

} // namespace

EngineMessageRouter::EngineMessageRouter(ConfigHost &host, EngineEventTarget &target, QWidget *owner)
    : m_host(host), m_target(target), m_owner(owner)
{
}

void EngineMessageRouter::EventSubscribeClientMessage(qint32 message)
{
    if (!m_client || message <= 0)
        return;
    try {
        const QString name = m_client->GetStringValue(message, QStringLiteral("MESSAGE"));
        if (name == QLatin1String("EngineTerminated")) {
            m_target.CloseForEngineEnd();
            return;
        }
        HandleGuard result(*m_client, m_client->GetHandleValue(message, QStringLiteral("Result")));
        if (result.isValid())
            Dispatch(name, result.get());
    } catch (const std::exception &e) {
        CLog::SaveMessage(QLatin1String(HandlerNames::EventSubscribeClientMessage),
                          QString::fromUtf8(e.what()));
    }
}

void EngineMessageRouter::Dispatch(const QString &name, quillon::Handle result)
{
    if (name == QLatin1String("ImportOPML"))
        OnImportOpml(result);
    else if (name == QLatin1String("PreviewSubscription"))
        m_target.OpenPreviewToAdd(m_client->GetStringValue(result, QStringLiteral("TITLE")),
                                  m_client->GetStringValue(result, QStringLiteral("URL")));
    else if (name == QLatin1String("PromptForDownload"))
        OnPromptForDownload(result);
    else if (name == QLatin1String("LoginRequired"))
        HandleLoginRequired(result);
    else if (name == QLatin1String("SubscriptionAdded"))
        OnSubscriptionAdded(result);
    else if (name == QLatin1String("SubscriptionBindingChanged"))
        OnBindingChanged(result);
    else if (name == QLatin1String("SubscriptionChanged"))
        OnSubscriptionChanged(result);
}

void EngineMessageRouter::HandleSubscribeClientCallback(qint32 message)
{
    if (!m_client || message <= 0)
        return;
    const QString where = QLatin1String(HandlerNames::HandleSubscribeClientCallback);
    try {
        HandleGuard result(*m_client, m_client->GetHandleValue(message, QStringLiteral("Result")));
        if (!result.isValid()) {
            const QString error = m_client->GetStringValue(message, QStringLiteral("ERROR"));
            CLog::SaveMessage(where, error);
            if (SubscriptionListLoader::HasValue(error))
                m_host.SetStatusText(error);
            return;
        }
        const qint32 id = m_client->GetLongValue(result.get(), QStringLiteral("SUBSCRIPTIONID"));
        MaybeRefreshDisplay(quillon::isValidId(id) ? id : -1);
    } catch (const std::exception &e) {
        CLog::SaveMessage(where, QString::fromUtf8(e.what()));
    }
}

void EngineMessageRouter::OnImportOpml(quillon::Handle result)
{
    m_target.OpenImport(m_client->GetStringValue(result, QStringLiteral("PATH")));
}

void EngineMessageRouter::OnPromptForDownload(quillon::Handle result)
{
    m_downloadQueue.append(m_client->GetLongValue(result, QStringLiteral("SUBSCRIPTIONID")));
    HandlePromptForDownload();
}

void EngineMessageRouter::HandlePromptForDownload()
{
    // A message that arrives while a question is open joins the queue the open loop empties.
    if (m_askingDownloads || !m_client)
        return;
    const QScopedValueRollback<bool> asking(m_askingDownloads, true);
    while (!m_downloadQueue.isEmpty()) {
        const qint32 id = m_downloadQueue.takeFirst();
        const QString prompt =
            GetConsumerSetting(*m_client, QStringLiteral("PromptForAutoDownload"), QStringLiteral("1"),
                               kMediaConsumer, QStringLiteral("Settings"));
        if (prompt == QLatin1String("1")) {
            frmEnclosureWarning::Run(*m_client, id, m_owner);
            continue;
        }
        if (!quillon::isValidId(id))
            continue;
        const QString general =
            GetConsumerSetting(*m_client, QStringLiteral("EnableAutoDownload"), QStringLiteral("0"),
                               kMediaConsumer, QStringLiteral("Settings"));
        SetConsumerSetting(*m_client, kMediaConsumer, SubscriptionSpecificsSection(id),
                           QStringLiteral("EnableAutoDownload"), general);
    }
}

void EngineMessageRouter::HandleLoginRequired(quillon::Handle result)
{
    if (!m_client)
        return;
    frmUserNameAndPassword::Run(*m_client, m_client->GetLongValue(result, QStringLiteral("SUBSCRIPTIONID")),
                                m_owner);
}

void EngineMessageRouter::OnSubscriptionAdded(quillon::Handle result)
{
    const qint32 id = m_client->GetLongValue(result, QStringLiteral("SUBSCRIPTIONID"));
    if (!quillon::isValidId(id))
        return;
    HandleGuard item(*m_client, m_client->GetItemBag(kNewsClass, id, 0));
    const QString url = m_client->GetStringValue(item.get(), QStringLiteral("URL"));
    QString title = m_client->GetStringValue(item.get(), QStringLiteral("TITLE"));
    if (!SubscriptionListLoader::HasValue(title))
        title = url;
    const bool added = m_target.PlaceNewSubscription(
        id, title, url, m_client->GetStringValue(item.get(), QStringLiteral("CATEGORY")));
    m_host.SetStatusText(QStringLiteral("Adding: ") + title);
    if (!added)
        MaybeRefreshDisplay(id);
}

QList<qint32> EngineMessageRouter::MessageIds(quillon::Handle result)
{
    QList<qint32> ids;
    HandleGuard list(*m_client, m_client->GetHandleValue(result, QStringLiteral("SUBSCRIPTIONIDS")));
    if (list.isValid()) {
        for (qint32 i = 0, n = m_client->ListCount(list.get()); i < n; ++i)
            ids.append(m_client->ListLong(list.get(), i));
    } else {
        ids.append(m_client->GetLongValue(result, QStringLiteral("SUBSCRIPTIONID")));
    }
    return ids;
}

QString EngineMessageRouter::SubscriptionTitle(qint32 subscriptionId)
{
    try {
        HandleGuard item(*m_client, m_client->GetItemBag(kNewsClass, subscriptionId, 0));
        const QString title = m_client->GetStringValue(item.get(), QStringLiteral("TITLE"));
        return SubscriptionListLoader::HasValue(title) ? title : QString();
    } catch (const quillon::EngineError &) {
        // Removed meanwhile: nothing to name.
        return QString();
    }
}

void EngineMessageRouter::NoteOwnBinds(const QList<qint32> &ids, bool nowChecked)
{
    for (const qint32 id : ids)
        m_ownBinds.insert(id, nowChecked);
}

bool EngineMessageRouter::BindShouldBeIgnored(qint32 subscriptionId, const QString &bindFlag)
{
    const auto found = m_ownBinds.constFind(subscriptionId);
    if (found == m_ownBinds.constEnd() || *found != (bindFlag == QLatin1String("TRUE")))
        return false;
    m_ownBinds.erase(found);
    return true;
}

void EngineMessageRouter::OnBindingChanged(quillon::Handle result)
{
    const QString originator = m_client->GetStringValue(result, QStringLiteral("ORIGINATOR"));
    const QString flag = m_client->GetStringValue(result, QStringLiteral("SubscriptionBindFlag"));
    const QList<qint32> ids = MessageIds(result);
    if (originator == kConfigConsumer) {
        for (const qint32 id : ids)
            m_ownBinds.remove(id);
        return;
    }
    // Without an originator, only a change this window did not make itself counts.
    if (originator == quillon::kMissingText &&
        std::all_of(ids.begin(), ids.end(), [&](qint32 id) { return BindShouldBeIgnored(id, flag); }))
        return;
    const QString action =
        flag == QLatin1String("TRUE") ? QStringLiteral("Adding: ") : QStringLiteral("Removing: ");
    for (const qint32 id : ids) {
        if (!quillon::isValidId(id))
            continue;
        if (const QString title = SubscriptionTitle(id); !title.isEmpty())
            m_host.SetStatusText(action + title);
    }
    MaybeRefreshDisplay();
}

void EngineMessageRouter::OnSubscriptionChanged(quillon::Handle result)
{
    for (const qint32 id : MessageIds(result)) {
        if (quillon::isValidId(id) && !m_changed.contains(id))
            m_changed.append(id);
    }
}

void EngineMessageRouter::Refresh(qint32 selectId)
{
    // A reload reads every subscription anew.
    m_changed.clear();
    m_target.RefreshAndSelect(selectId);
}

void EngineMessageRouter::FollowGatheredChanges()
{
    // Held back like a refresh while the window changes the engine; a reload to come covers them.
    if (m_changed.isEmpty() || m_refresh.IgnoringMessages() || m_refresh.RefreshPending())
        return;
    m_target.FollowChanges(std::exchange(m_changed, {}));
}

void EngineMessageRouter::MaybeRefreshDisplay(qint32 selectId)
{
    if (m_refresh.MaybeRefresh(selectId) == RefreshMerger::Action::Refresh)
        Refresh(selectId);
}

void EngineMessageRouter::DoDisplayRefresh()
{
    try {
        Refresh(m_refresh.TakePendingSelection());
    } catch (const std::exception &e) {
        CLog::SaveMessage(QLatin1String(HandlerNames::DoDisplayRefresh), QString::fromUtf8(e.what()));
    }
}

void EngineMessageRouter::Run()
{
    try {
        const bool counting = m_refresh.Countdown() > 0;
        if (m_refresh.Flush() != RefreshMerger::Action::Refresh) {
            FollowGatheredChanges();
            return;
        }
        Refresh(m_refresh.TakePendingSelection());
        if (!counting)
            m_host.SetStatusText(QString());
    } catch (const std::exception &e) {
        CLog::SaveMessage(QStringLiteral("Config - Runloop"), QString::fromUtf8(e.what()));
    }
}
