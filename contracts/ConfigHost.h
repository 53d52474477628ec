#pragma once

#include "SubscribeClient.h"

#include <QString>
#include <QStringList>

class QObject;

// What a window offers the pages and dialogs it hosts. The main window implements it, and so
// will the options window; a hosted page or wizard talks back only through these operations.
class ConfigHost
{
public:
    virtual ~ConfigHost() = default;

    // The host's own host, the object that opened it.
    virtual void SetHost(QObject *host) = 0;
    virtual void SetClient(quillon::SubscribeClientPtr client) = 0;
    // "CONFIGCONSUMER".
    [[nodiscard]] virtual QString GetConsumerID() const = 0;
    // "NEWS", the class word of subscriptions in every engine call.
    [[nodiscard]] virtual QString GetNewsSubscriptionType() const = 0;
    // A hosted page changed a field: offer to apply.
    virtual void OnStatusChange() = 0;
    // subscriptionId 0 (an empty reference) runs the add-subscription wizard; handled says
    // whether the host dealt with the request itself.
    virtual void EditConfiguration(qint32 subscriptionId, bool &handled) = 0;
    virtual void SetHotHelp(const QString &text, const QString &warning) = 0;

    // What hosted windows need beyond that: the status line, a busy indication while a long
    // request runs, and the user's category paths in the host's collection order.
    virtual void SetStatusText(const QString &text) = 0;
    virtual void SetBusy(bool busy) = 0;
    [[nodiscard]] virtual QStringList Categories() const = 0;
};
