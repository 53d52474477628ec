#pragma once

#include "PropertyBag.h"
#include "SubscribeClient.h"

#include <QList>

// Copies every message it is handed, nested bags and lists included, out of the client's
// handles into plain bags (texts only: the client cannot tell a number from its text).
class CopyingCallback : public quillon::ISubscribeClientCallback
{
public:
    explicit CopyingCallback(quillon::SubscribeClient &client) : m_client(client) {}

    void Setup(QObject *) override {}
    void Shutdown() override {}
    qint32 ProcessMessage(quillon::Handle &bag) override
    {
        received.append(copyBag(m_client, bag));
        return 0;
    }
    // The messages named so, in order.
    [[nodiscard]] QList<quillon::BagPtr> named(const QString &name) const
    {
        QList<quillon::BagPtr> found;
        for (const auto &message : received) {
            if (message->text(QStringLiteral("MESSAGE")) == name)
                found.append(message);
        }
        return found;
    }

    static quillon::BagPtr copyBag(quillon::SubscribeClient &client, quillon::Handle bag)
    {
        auto copy = quillon::PropertyBag::create();
        const quillon::Handle names = client.ListNames(bag);
        for (qint32 i = 0, n = client.ListCount(names); i < n; ++i) {
            const QString name = client.ListString(names, i);
            const quillon::Handle nested = client.GetHandleValue(bag, name);
            if (nested > 0) {
                copy->set(name, copyNested(client, nested));
                client.ReleaseHandle(nested);
            } else {
                copy->setText(name, client.GetStringValue(bag, name));
            }
        }
        client.ReleaseHandle(names);
        return copy;
    }

    QList<quillon::BagPtr> received;

private:
    // A handle is a list when ListCount accepts it, else a bag.
    static quillon::PropertyValue copyNested(quillon::SubscribeClient &client, quillon::Handle handle)
    {
        qint32 count = -1;
        try {
            count = client.ListCount(handle);
        } catch (const quillon::EngineError &) {
            return copyBag(client, handle);
        }
        auto list = quillon::PropertyList::create();
        for (qint32 i = 0; i < count; ++i) {
            const quillon::Handle entry = client.ListHandle(handle, i);
            if (entry > 0) {
                list->append(copyNested(client, entry));
                client.ReleaseHandle(entry);
            } else {
                list->append(client.ListString(handle, i));
            }
        }
        return list;
    }

    quillon::SubscribeClient &m_client;
};
