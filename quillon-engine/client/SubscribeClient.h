#pragma once

#include "EngineError.h"
#include "ISubscribeClientCallback.h"

#include <QString>

#include <memory>

namespace quillon {

using CallbackPtr = std::shared_ptr<ISubscribeClientCallback>;

// The engine client a consumer talks to. Bags and lists live inside the client and are named
// by handles (> 0 valid); each handle obtained is released once with ReleaseHandle.
// Every operation raises EngineError when it fails.
//
// Operations stand in the order of the engine client's interface. Answers to SubmitRequest
// and RequestPreview, and unsolicited messages to the Connect callback, are delivered from
// the event loop, never inside another call on the client.
class SubscribeClient
{
public:
    virtual ~SubscribeClient() = default;

    virtual void Connect(const QString &consumerId, CallbackPtr callback) = 0;
    virtual void ReleaseHandle(Handle handle) = 0;
    virtual void RemoveItem(const QString &itemClass, qint32 subscriptionId, qint32 flag) = 0;
    // flag 1: toggle delivery keeping delivered articles; 0: stop delivery and remove them.
    // See docs/PROTOCOL.md for the whole rule.
    virtual void BindItem(const QString &consumerId, const QString &itemClass, qint32 subscriptionId,
                          qint32 flag) = 0;
    [[nodiscard]] virtual Handle CreateItemRequest(const QString &itemClass, const QString &title,
                                                   const QString &url) = 0;
    // consumerId "*" lists every subscription of the class, bound or not.
    [[nodiscard]] virtual Handle ListConsumerItems(const QString &consumerId, const QString &itemClass) = 0;
    // The client reads ahead: after ListConsumerItems("*", "NEWS") the bags of the listed
    // subscriptions come in batches (GetItemBags) as the caller reads them in list order, until
    // control returns to the event loop, the client changes anything in the engine or an engine
    // message arrives. A bag read after any of these is read afresh.
    [[nodiscard]] virtual Handle GetItemBag(const QString &itemClass, qint32 subscriptionId,
                                            qint32 reserved) = 0;
    // Several subscriptions' bags in one round trip: a list with one bag per entry of ids (a
    // list of IDs), in the same order; an ID that names no subscription gives an empty bag.
    [[nodiscard]] virtual Handle GetItemBags(const QString &itemClass, Handle ids) = 0;
    [[nodiscard]] virtual Handle NewBag() = 0;
    virtual void SetHandleValue(Handle bag, const QString &name, Handle value) = 0;
    virtual void SetStringValue(Handle bag, const QString &name, const QString &value) = 0;
    virtual void SetLongValue(Handle bag, const QString &name, qint32 value) = 0;
    // An absent name reads as "-237237" / -237237; a missing nested bag as handle 0.
    [[nodiscard]] virtual QString GetStringValue(Handle bag, const QString &name) = 0;
    [[nodiscard]] virtual qint32 GetLongValue(Handle bag, const QString &name) = 0;
    [[nodiscard]] virtual Handle GetHandleValue(Handle bag, const QString &name) = 0;
    [[nodiscard]] virtual Handle ListNames(Handle bag) = 0;
    [[nodiscard]] virtual qint32 ListCount(Handle list) = 0;
    [[nodiscard]] virtual Handle ListHandle(Handle list, qint32 index) = 0;
    [[nodiscard]] virtual qint32 ListLong(Handle list, qint32 index) = 0;
    [[nodiscard]] virtual QString ListString(Handle list, qint32 index) = 0;
    [[nodiscard]] virtual Handle ListReaderSubscriptions(const QString &readerName) = 0;
    virtual void UpdateItem(const QString &itemClass, qint32 subscriptionId, Handle bag) = 0;
    virtual QString RequestPreview(const QString &itemClass, const QString &url, CallbackPtr callback) = 0;
    [[nodiscard]] virtual Handle GetSettings(const QString &consumerId, const QString &section,
                                             Handle keys) = 0;
    virtual void SetSettings(const QString &consumerId, const QString &section, Handle values) = 0;
    virtual void Log(const QString &text, qint32 level) = 0;
    [[nodiscard]] virtual Handle NewList() = 0;
    virtual void ListAppend(Handle list, const QString &value) = 0;
    virtual qint32 SubmitRequest(Handle bag, CallbackPtr callback) = 0;
    virtual void SetSyncSettings(qint32 enabled, const QString &server, const QString &user,
                                 const QString &password, qint32 frequencySeconds) = 0;
    [[nodiscard]] virtual Handle GetSyncSettings() = 0;
    virtual void SyncNow() = 0;
    [[nodiscard]] virtual QString BagToText(Handle bag) = 0;
    // The way a request to url would go: a bag of "URL", "PROXY" (empty: directly), "REASON"
    // and "LOGIN" (the proxy user, "(current user)", or empty).
    [[nodiscard]] virtual Handle ProxyForUrl(const QString &url) = 0;

    // Diagnostics: handles obtained and not yet released.
    [[nodiscard]] virtual int LiveHandleCount() const = 0;
};

using SubscribeClientPtr = std::shared_ptr<SubscribeClient>;

} // namespace quillon
