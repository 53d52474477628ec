#include "callbackSupport.h"

#include "AddProgress.h"
#include "CBAddSub.h"
#include "EngineNames.h"
#include "HandleGuard.h"
#include "HandlerNames.h"
#include "PropertyBag.h"

#include <QMetaObject>
#include <QObject>

using EngineNames::kNewsClass;

namespace callbackSupport {

qint32 &PendingAddCount()
{
    static qint32 count = 0;
    return count;
}

namespace {
CheckNowRequest &checkNowState()
{
    static CheckNowRequest state;
    return state;
}
} // namespace

void CheckNow(const QString &text, const quillon::SubscribeClientPtr &client)
{
    checkNowState() = {text, client};
}

const CheckNowRequest &LastCheckNow()
{
    return checkNowState();
}

void SetTargetStatusText(QObject *target, const QString &text)
{
    if (target)
        QMetaObject::invokeMethod(target, HandlerNames::SetStatusText, Qt::DirectConnection,
                                  Q_ARG(QString, text));
}

qint32 RequestAddSubscription(QObject *target, const quillon::SubscribeClientPtr &client,
                              const QString &title, const QString &url, bool autoBind, const QString &user,
                              const QString &password, const QString &category)
{
    SetTargetStatusText(target, QStringLiteral("Requesting: ") + (title.isEmpty() ? url : title));
    HandleGuard request(*client, client->CreateItemRequest(kNewsClass, title, url));
    HandleGuard consumers(*client);
    if (!user.isEmpty() && !password.isEmpty()) {
        client->SetStringValue(request.get(), QStringLiteral("USER"), user);
        client->SetStringValue(request.get(), QStringLiteral("PASSWORD"), password);
    }
    if (!category.isEmpty())
        client->SetStringValue(request.get(), QStringLiteral("CATEGORY"), category);
    if (autoBind) {
        consumers.reset(client->NewList());
        client->ListAppend(consumers.get(), EngineNames::kOutlookConsumer);
        client->SetHandleValue(request.get(), QStringLiteral("ConsumerIDs"), consumers.get());
    }
    if (request.isValid()) {
        auto callback = std::make_shared<CBAddSub>();
        callback->Setup(target, client, autoBind);
        ++PendingAddCount();
        AddProgress::Instance().Expect(1);
        try {
            client->SubmitRequest(request.get(), callback);
        } catch (...) {
            AddProgress::Instance().Withdraw();
            throw;
        }
    }
    return 0;
}

void RemoveSubscription(quillon::SubscribeClient &client, qint32 subscriptionId, const QString &displayName,
                        QObject *statusTarget)
{
    // The fallback name is formed but the status line shows the name as given, even empty.
    const QString name = displayName.isEmpty()
                             ? QStringLiteral("Subscription #") + QString::number(subscriptionId)
                             : displayName;
    Q_UNUSED(name);
    SetTargetStatusText(statusTarget, QStringLiteral("Removing: ") + displayName);
    client.RemoveItem(kNewsClass, subscriptionId, 1);
}

void UpdateAllSubscriptions(quillon::SubscribeClient &client)
{
    HandleGuard empty(client, client.NewBag());
    HandleGuard ids(client, client.ListConsumerItems(EngineNames::kOutlookConsumer, kNewsClass));
    const qint32 count = client.ListCount(ids.get());
    for (qint32 i = 0; i < count; ++i) {
        const qint32 id = client.ListLong(ids.get(), i);
        if (id >= 1 && id != quillon::kMissing)
            client.UpdateItem(kNewsClass, id, empty.get());
    }
}

} // namespace callbackSupport
