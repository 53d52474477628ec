#include "CBAddSub.h"

#include "AddProgress.h"
#include "EngineNames.h"
#include "HandleGuard.h"
#include "PropertyBag.h"
#include "callbackSupport.h"

#include <QLoggingCategory>
#include <QMetaObject>
#include <QObject>

using EngineNames::kNewsClass;

Q_DECLARE_LOGGING_CATEGORY(lcCallbacks)

void CBAddSub::Setup(QObject *target, quillon::SubscribeClientPtr client, bool autoBind)
{
    CBBase::Setup(target);
    m_client = std::move(client);
    m_autoBind = autoBind;
}

void CBAddSub::Shutdown()
{
    m_client.reset();
    CBBase::Shutdown();
}

void CBAddSub::Handle(quillon::Handle &bag)
{
    Forward(HandlerName(), bag);
    bool added = false;
    QString title;
    try {
        if (m_client) {
            HandleGuard result(*m_client, m_client->GetHandleValue(bag, QStringLiteral("Result")));
            const qint32 id =
                result.isValid() ? m_client->GetLongValue(result.get(), QStringLiteral("SUBSCRIPTIONID")) : 0;
            if (id > 0) {
                added = true;
                title = Complete(*m_client, id);
            }
        }
    } catch (const std::exception &e) {
        qCWarning(lcCallbacks) << "add answer not completed:" << e.what();
    }
    // Every answer, failed or not, moves the run on, so its line always ends.
    AddProgress::Instance().Answered(added, title);
}

QString CBAddSub::Complete(quillon::SubscribeClient &client, qint32 subscriptionId)
{
    if (m_autoBind)
        client.BindItem(EngineNames::kOutlookConsumer, kNewsClass, subscriptionId, 1);
    if (TakeCompletion()) {
        QMetaObject::invokeMethod(Target(), HandlerNames::DoDisplayRefresh, Qt::DirectConnection);
        return AddedTitle(client, subscriptionId);
    }
    const QString title = AddedTitle(client, subscriptionId);
    if (!title.isEmpty())
        callbackSupport::SetTargetStatusText(Target(), QStringLiteral("Added: ") + title);
    return title;
}

bool CBAddSub::TakeCompletion()
{
    // Only auto-bound adds count down; an add without auto-bind leaves the counter raised for
    // the rest of the run, so later answers report instead of refreshing. This is intended.
    qint32 &pending = callbackSupport::PendingAddCount();
    if (m_autoBind && pending >= 1)
        return pending-- == 1;
    return pending == 0;
}

QString CBAddSub::AddedTitle(quillon::SubscribeClient &client, qint32 subscriptionId)
{
    HandleGuard item(client, client.GetItemBag(kNewsClass, subscriptionId, 0));
    QString title = client.GetStringValue(item.get(), QStringLiteral("FOLDERTITLE"));
    if (title.isEmpty() || title == quillon::kMissingText)
        title = client.GetStringValue(item.get(), QStringLiteral("TITLE"));
    return title == quillon::kMissingText ? QString() : title;
}
