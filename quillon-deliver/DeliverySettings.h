#pragma once

#include "FolderPlan.h"
#include "SubscribeClient.h"

#include <QList>
#include <QPair>

// Reads what delivery needs from the engine: the Outlook defaults and each subscription's
// place. Every handle obtained is released; engine failures come out as EngineError.
class DeliverySettings
{
public:
    static inline const QString kConsumer = QStringLiteral("OLCONSUMER");

    explicit DeliverySettings(quillon::SubscribeClient &client) : m_client(client) {}

    [[nodiscard]] FolderDefaults defaults();
    // nullopt when the subscription no longer exists.
    [[nodiscard]] std::optional<SubscriptionPlace> place(qint32 subscriptionId);
    // The subscriptions bound to delivery.
    [[nodiscard]] QList<qint32> boundSubscriptions();
    // Writes settings of the delivery consumer (section, key, value).
    void store(const QString &section, const QList<QPair<QString, QString>> &values);
    // Values of keys in a settings section, each with its default.
    QStringList read(const QString &section, const QList<QPair<QString, QString>> &keys);

private:
    quillon::SubscribeClient &m_client;
};
