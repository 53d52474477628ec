#pragma once

#include "SubscribeClient.h"

#include <QList>
#include <QMap>
#include <QString>

// Keeps a copy of every message it is handed; the handle itself dies with ProcessMessage.
class MessageRecorder : public quillon::ISubscribeClientCallback
{
public:
    struct Message
    {
        QString name;
        QString error;
        QMap<QString, QString> result; // every Result value as text
        QList<int> ids;                // SUBSCRIPTIONIDS
    };

    explicit MessageRecorder(quillon::SubscribeClient &client) : m_client(client) {}

    void Setup(QObject *) override {}
    void Shutdown() override {}
    qint32 ProcessMessage(quillon::Handle &bag) override
    {
        Message copy;
        copy.name = m_client.GetStringValue(bag, QStringLiteral("MESSAGE"));
        copy.error = m_client.GetStringValue(bag, QStringLiteral("ERROR"));
        if (const quillon::Handle result = m_client.GetHandleValue(bag, QStringLiteral("Result"))) {
            copyResult(result, copy);
            m_client.ReleaseHandle(result);
        }
        received.append(copy);
        return 0;
    }

    QList<Message> received;

private:
    void copyResult(quillon::Handle result, Message &copy)
    {
        const quillon::Handle names = m_client.ListNames(result);
        for (int i = 0; i < m_client.ListCount(names); ++i) {
            const QString name = m_client.ListString(names, i);
            if (name == QLatin1String("SUBSCRIPTIONIDS")) {
                const quillon::Handle ids = m_client.GetHandleValue(result, name);
                for (int j = 0; j < m_client.ListCount(ids); ++j)
                    copy.ids.append(m_client.ListLong(ids, j));
                m_client.ReleaseHandle(ids);
            } else {
                copy.result.insert(name, m_client.GetStringValue(result, name));
            }
        }
        m_client.ReleaseHandle(names);
    }

    quillon::SubscribeClient &m_client;
};
