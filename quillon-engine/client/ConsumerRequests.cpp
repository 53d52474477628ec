#include "ConsumerRequests.h"

#include "FunctionCallback.h"
#include "HandleGuard.h"

using quillon::Handle;

namespace {
std::shared_ptr<quillon::FunctionCallback> guarded(QObject *owner, ConsumerRequests::OnBag f)
{
    return std::make_shared<quillon::FunctionCallback>([guard = QPointer<QObject>(owner), f](Handle bag) {
        if (guard && f)
            f(bag);
    });
}
} // namespace

void ConsumerRequests::connect(quillon::SubscribeClient &client, const QString &consumerId, QObject *owner,
                               OnBag onMessage)
{
    client.Connect(consumerId, guarded(owner, std::move(onMessage)));
}

void ConsumerRequests::submit(quillon::SubscribeClient &client, const QString &kind, const OnBag &fill,
                              QObject *owner, OnBag answer)
{
    HandleGuard bag(client, client.NewBag());
    client.SetStringValue(bag.get(), QStringLiteral("REQUEST"), kind);
    if (fill)
        fill(bag.get());
    client.SubmitRequest(bag.get(), guarded(owner, std::move(answer)));
}

void ConsumerRequests::askForArticles(quillon::SubscribeClient &client, qint32 limit, qint32 after,
                                      QObject *owner, OnBag answer)
{
    const auto fill = [&client, limit, after](Handle bag) {
        client.SetLongValue(bag, QStringLiteral("LIMIT"), limit);
        if (after > 0)
            client.SetLongValue(bag, QStringLiteral("AFTER"), after);
    };
    submit(client, QStringLiteral("PENDINGARTICLES"), fill, owner, std::move(answer));
}

void ConsumerRequests::putIds(quillon::SubscribeClient &client, Handle bag, const QList<qint32> &ids)
{
    HandleGuard list(client, client.NewList());
    for (const qint32 id : ids)
        client.ListAppend(list.get(), QString::number(id));
    client.SetHandleValue(bag, QStringLiteral("ARTICLEIDS"), list.get());
}

bool ConsumerRequests::connectionLost(const std::exception &e)
{
    return QString::fromUtf8(e.what()).contains(QLatin1String("connection was lost"), Qt::CaseInsensitive);
}

QString ConsumerRequests::messageFor(quillon::SubscribeClient &client, Handle message,
                                     const QString &consumerId)
{
    const QString name = client.GetStringValue(message, QStringLiteral("MESSAGE"));
    if (name == QLatin1String("EngineTerminated"))
        return name;
    HandleGuard result(client, client.GetHandleValue(message, QStringLiteral("Result")));
    if (!result.isValid())
        return {};
    const QString consumer = client.GetStringValue(result.get(), QStringLiteral("CONSUMERID"));
    return consumer.compare(consumerId, Qt::CaseInsensitive) == 0 ? name : QString();
}
