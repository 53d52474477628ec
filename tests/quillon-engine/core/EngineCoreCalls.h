#pragma once

#include "EngineCalls.h"
#include "PropertyBag.h"
#include "SubscribeClient.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>

// The client calls and store reads the engine core's tests make, each releasing what it got.
namespace EngineCoreCalls {

using namespace quillon;
using namespace EngineCalls;

// Reads the store behind the engine's back, as a fetcher or a second process would.
class SideConnection
{
public:
    explicit SideConnection(const QString &path) : m_name(QStringLiteral("side-%1").arg(++s_count))
    {
        auto db = QSqlDatabase::addDatabase("QSQLITE", m_name);
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

// Adds a subscription titled after its address, bound to the consumers named.
inline qint32 add(SubscribeClient &c, const QString &url, const QStringList &consumerIds = {})
{
    return EngineCalls::AddSubscription(c, "Title of " + url, url, {}, consumerIds);
}

} // namespace EngineCoreCalls
