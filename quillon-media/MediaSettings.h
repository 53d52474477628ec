#pragma once

#include "MediaChoices.h"
#include "NetworkSettings.h"
#include "SubscribeClient.h"

#include <QList>
#include <QPair>

// Reads the media consumer's settings from the engine ("MEDIACONSUMER", section "Settings"
// and "SubscriptionSpecifics_<id>") and writes its progress there.
class MediaSettings
{
public:
    static constexpr const char *kConsumer = "MEDIACONSUMER";

    explicit MediaSettings(quillon::SubscribeClient &client) : m_client(client) {}

    // Every key from the subscription's own section where it has one, else the general one.
    [[nodiscard]] MediaChoices choices(qint32 subscriptionId);
    // Whether the subscription holds its own download answer (the question was answered).
    [[nodiscard]] bool hasOwnAnswer(qint32 subscriptionId);
    // "downloading 3 of 7", or "" once nothing waits; ConfigConsumer's details pane shows it.
    void reportProgress(qint32 subscriptionId, const QString &text);

    // The engine's network settings, which every download follows as feed fetches do.
    [[nodiscard]] quillon::NetworkSettings network();

    [[nodiscard]] static QString section(qint32 subscriptionId);

private:
    [[nodiscard]] QStringList read(const QString &section, const QList<QPair<QString, QString>> &keys);

    quillon::SubscribeClient &m_client;
};
