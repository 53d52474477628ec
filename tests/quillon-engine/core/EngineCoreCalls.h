#pragma once

#include "MessageRecorder.h"
#include "PropertyBag.h"
#include "SubscribeClient.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>

// The client calls and store reads the engine core's tests make, each releasing what it got.
namespace EngineCoreCalls {

using namespace quillon;

inline const QString kNews = QStringLiteral("NEWS");

// Reads the store behind the engine's back, as a fetcher or a second process would.
class SideConnection
{
public:
    explicit SideConnection(const QString &path) : m_name(QStringLiteral("side-%1").arg(++s_count))
    {
        auto db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_name);
        db.setDatabaseName(path);
        db.open();
    }
    ~SideConnection() { QSqlDatabase::removeDatabase(m_name); }
    int number(const QString &sql)
    {
        QSqlQuery q(QSqlDatabase::database(m_name));
        return q.exec(sql) && q.next() ? q.value(0).toInt() : -1;
    }
    bool exec(const QString &sql) { return QSqlQuery(QSqlDatabase::database(m_name)).exec(sql); }

private:
    static inline int s_count = 0;
    QString m_name;
};

inline qint32 add(SubscribeClient &c, const QString &url, const QStringList &consumerIds = {})
{
    const Handle request = c.CreateItemRequest(kNews, QStringLiteral("Title of ") + url, url);
    const Handle list = c.NewList();
    for (const QString &consumer : consumerIds)
        c.ListAppend(list, consumer);
    if (!consumerIds.isEmpty())
        c.SetHandleValue(request, QStringLiteral("ConsumerIDs"), list);
    auto answer = std::make_shared<MessageRecorder>(c);
    c.SubmitRequest(request, answer);
    c.ReleaseHandle(list);
    c.ReleaseHandle(request);
    if (!QTest::qWaitFor([&] { return !answer->received.isEmpty(); }))
        return 0;
    return answer->received.first().result.value(QStringLiteral("SUBSCRIPTIONID")).toInt();
}

inline QString itemText(SubscribeClient &c, qint32 id, const QString &name)
{
    const Handle bag = c.GetItemBag(kNews, id, 0);
    const QString value = c.GetStringValue(bag, name);
    c.ReleaseHandle(bag);
    return value;
}

inline QString setting(SubscribeClient &c, const QString &consumer, const QString &section,
                       const QString &key)
{
    const Handle keys = c.NewBag();
    c.SetStringValue(keys, key, kMissingText);
    const Handle result = c.GetSettings(consumer, section, keys);
    const QString value = c.GetStringValue(result, key);
    c.ReleaseHandle(result);
    c.ReleaseHandle(keys);
    return value;
}

inline void setSetting(SubscribeClient &c, const QString &consumer, const QString &section,
                       const QString &key, const QString &value)
{
    const Handle values = c.NewBag();
    c.SetStringValue(values, key, value);
    c.SetSettings(consumer, section, values);
    c.ReleaseHandle(values);
}

inline QList<int> items(SubscribeClient &c, const QString &consumer)
{
    QList<int> ids;
    const Handle list = c.ListConsumerItems(consumer, kNews);
    for (int i = 0; i < c.ListCount(list); ++i)
        ids.append(c.ListLong(list, i));
    c.ReleaseHandle(list);
    return ids;
}

} // namespace EngineCoreCalls
