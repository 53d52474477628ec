#pragma once

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>

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
