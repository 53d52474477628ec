#pragma once

#include "PropertyBag.h"
#include "SubscribeClient.h"

#include <QHash>
#include <QList>
#include <QStringList>

// Keeps the message name and the Result's texts of every bag it is given, for tests.
class RecordingCallback : public quillon::ISubscribeClientCallback
{
public:
    struct Record
    {
        QString message;
        QString error;
        bool hasResult = false;
        QHash<QString, QString> result;
        QList<qint32> ids; // SUBSCRIPTIONIDS
    };

    explicit RecordingCallback(quillon::SubscribeClient *client) : m_client(client) {}
    void Setup(QObject *) override {}
    void Shutdown() override {}
    qint32 ProcessMessage(quillon::Handle &bag) override
    {
        Record record;
        record.message = m_client->GetStringValue(bag, QStringLiteral("MESSAGE"));
        record.error = m_client->GetStringValue(bag, QStringLiteral("ERROR"));
        const quillon::Handle result = m_client->GetHandleValue(bag, QStringLiteral("Result"));
        if (result > 0) {
            record.hasResult = true;
            const quillon::Handle names = m_client->ListNames(result);
            for (qint32 i = 0, n = m_client->ListCount(names); i < n; ++i) {
                const QString name = m_client->ListString(names, i);
                if (name == QLatin1String("SUBSCRIPTIONIDS"))
                    record.ids = listLongs(m_client->GetHandleValue(result, name));
                else
                    record.result.insert(name, m_client->GetStringValue(result, name));
            }
            m_client->ReleaseHandle(names);
            m_client->ReleaseHandle(result);
        }
        records.append(record);
        return 0;
    }

    QList<Record> records;

private:
    QList<qint32> listLongs(quillon::Handle list)
    {
        QList<qint32> values;
        for (qint32 i = 0, n = m_client->ListCount(list); i < n; ++i)
            values.append(m_client->ListLong(list, i));
        m_client->ReleaseHandle(list);
        return values;
    }

    quillon::SubscribeClient *m_client;
};
