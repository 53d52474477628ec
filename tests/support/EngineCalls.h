#pragma once

#include "CopyingCallback.h"
#include "SubscribeClient.h"

#include <QTest>

// The engine calls most tests make, each releasing what it obtained.
namespace EngineCalls {

inline const QString kNews = "NEWS";

// For a consumer that has to be connected but whose messages do not matter.
class IgnoreMessages : public quillon::ISubscribeClientCallback
{
public:
    void Setup(QObject *) override {}
    void Shutdown() override {}
    qint32 ProcessMessage(quillon::Handle &) override { return 0; }
};

// Submits an add request and waits for its answer: the new subscription's ID, 0 when none came.
inline qint32 AddSubscription(quillon::SubscribeClient &c, const QString &title, const QString &url,
                              const QString &category = {}, const QStringList &consumers = {})
{
    const quillon::Handle request = c.CreateItemRequest(kNews, title, url);
    if (!category.isEmpty())
        c.SetStringValue(request, "CATEGORY", category);
    const quillon::Handle list = c.NewList();
    for (const QString &consumer : consumers)
        c.ListAppend(list, consumer);
    if (!consumers.isEmpty())
        c.SetHandleValue(request, "ConsumerIDs", list);
    auto answer = std::make_shared<CopyingCallback>(c);
    c.SubmitRequest(request, answer);
    c.ReleaseHandle(list);
    c.ReleaseHandle(request);
    if (!QTest::qWaitFor([&] { return !answer->received.isEmpty(); }, 20000))
        return 0;
    const quillon::BagPtr result = answer->received.first()->bag("Result");
    return result ? result->number("SUBSCRIPTIONID") : 0;
}

// Submits a request of text fields, with the IDs as the list "ARTICLEIDS" (texts, as the client
// appends them), and waits for its answer: an empty bag when none came.
inline quillon::BagPtr Request(quillon::SubscribeClient &c, const QList<std::pair<QString, QString>> &fields,
                               const QList<qint32> &articleIds = {})
{
    const quillon::Handle bag = c.NewBag();
    for (const auto &[name, value] : fields)
        c.SetStringValue(bag, name, value);
    if (!articleIds.isEmpty()) {
        const quillon::Handle list = c.NewList();
        for (const qint32 id : articleIds)
            c.ListAppend(list, QString::number(id));
        c.SetHandleValue(bag, "ARTICLEIDS", list);
        c.ReleaseHandle(list);
    }
    auto answer = std::make_shared<CopyingCallback>(c);
    c.SubmitRequest(bag, answer);
    c.ReleaseHandle(bag);
    if (!QTest::qWaitFor([&answer] { return !answer->received.isEmpty(); }, 20000))
        return quillon::PropertyBag::create();
    return answer->received.first();
}

// The "ARTICLEID" of each item bag in an answer's "ITEMS".
inline QList<qint32> ArticleIds(const quillon::BagPtr &answer)
{
    QList<qint32> ids;
    const quillon::BagPtr result = answer->bag("Result");
    const quillon::ListPtr items = result ? result->list("ITEMS") : nullptr;
    for (const quillon::PropertyValue &item : items ? items->items() : QList<quillon::PropertyValue>())
        ids.append(std::get<quillon::BagPtr>(item)->number("ARTICLEID"));
    return ids;
}

// One value of a subscription as text.
inline QString ItemText(quillon::SubscribeClient &c, qint32 id, const QString &name)
{
    const quillon::Handle bag = c.GetItemBag(kNews, id, 0);
    const QString value = c.GetStringValue(bag, name);
    c.ReleaseHandle(bag);
    return value;
}

// Several values of a bag as text, in the order named, so that one comparison shows them all.
inline QStringList Texts(const quillon::BagPtr &bag, const QStringList &names)
{
    QStringList values;
    for (const QString &name : names)
        values.append(bag ? bag->text(name) : QString());
    return values;
}

// Several values of a subscription as text.
inline QStringList ItemTexts(quillon::SubscribeClient &c, qint32 id, const QStringList &names)
{
    const quillon::Handle bag = c.GetItemBag(kNews, id, 0);
    QStringList values;
    for (const QString &name : names)
        values.append(c.GetStringValue(bag, name));
    c.ReleaseHandle(bag);
    return values;
}

// The subscriptions bound to a consumer ("*": all of them), in the engine's order.
inline QList<qint32> ConsumerItems(quillon::SubscribeClient &c, const QString &consumer)
{
    QList<qint32> ids;
    const quillon::Handle list = c.ListConsumerItems(consumer, kNews);
    for (qint32 i = 0, n = c.ListCount(list); i < n; ++i)
        ids.append(c.ListLong(list, i));
    c.ReleaseHandle(list);
    return ids;
}

// One setting of a consumer's section, "-237237" when it was never written.
inline QString Setting(quillon::SubscribeClient &c, const QString &consumer, const QString &section,
                       const QString &key)
{
    const quillon::Handle keys = c.NewBag();
    c.SetStringValue(keys, key, quillon::kMissingText);
    const quillon::Handle result = c.GetSettings(consumer, section, keys);
    const QString value = c.GetStringValue(result, key);
    c.ReleaseHandle(result);
    c.ReleaseHandle(keys);
    return value;
}

inline void SetSetting(quillon::SubscribeClient &c, const QString &consumer, const QString &section,
                       const QString &key, const QString &value)
{
    const quillon::Handle values = c.NewBag();
    c.SetStringValue(values, key, value);
    c.SetSettings(consumer, section, values);
    c.ReleaseHandle(values);
}

} // namespace EngineCalls
