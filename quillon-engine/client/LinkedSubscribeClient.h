#pragma once

#include "EngineLink.h"
#include "HandleTable.h"
#include "SubscribeClient.h"

#include <QHash>
#include <QTimer>

#include <functional>

#include <memory>

namespace quillon {

// The engine client over any transport: keeps the handle table and the callbacks on this
// side and sends only values across the link. With a way to reopen the link, it comes back on
// its own after the engine crashed and was started again: handles stay valid (they never
// left this side), the connection callback is registered again, and requests lost with the
// old link are answered with an "ERROR". Only "EngineTerminated" ends it for good.
class LinkedSubscribeClient final : public SubscribeClient,
                                    public std::enable_shared_from_this<LinkedSubscribeClient>
{
public:
    using Reopen = std::function<std::unique_ptr<EngineLink>()>;

    static std::shared_ptr<LinkedSubscribeClient> create(std::unique_ptr<EngineLink> link,
                                                         Reopen reopen = {});
    ~LinkedSubscribeClient() override;

    void Connect(const QString &consumerId, CallbackPtr callback) override;
    void ReleaseHandle(Handle handle) override;
    void RemoveItem(const QString &itemClass, qint32 subscriptionId, qint32 flag) override;
    void BindItem(const QString &consumerId, const QString &itemClass, qint32 subscriptionId,
                  qint32 flag) override;
    Handle CreateItemRequest(const QString &itemClass, const QString &title, const QString &url) override;
    Handle ListConsumerItems(const QString &consumerId, const QString &itemClass) override;
    Handle GetItemBag(const QString &itemClass, qint32 subscriptionId, qint32 reserved) override;
    Handle GetItemBags(const QString &itemClass, Handle ids) override;
    Handle NewBag() override;
    void SetHandleValue(Handle bag, const QString &name, Handle value) override;
    void SetStringValue(Handle bag, const QString &name, const QString &value) override;
    void SetLongValue(Handle bag, const QString &name, qint32 value) override;
    QString GetStringValue(Handle bag, const QString &name) override;
    qint32 GetLongValue(Handle bag, const QString &name) override;
    Handle GetHandleValue(Handle bag, const QString &name) override;
    Handle ListNames(Handle bag) override;
    qint32 ListCount(Handle list) override;
    Handle ListHandle(Handle list, qint32 index) override;
    qint32 ListLong(Handle list, qint32 index) override;
    QString ListString(Handle list, qint32 index) override;
    Handle ListReaderSubscriptions(const QString &readerName) override;
    void UpdateItem(const QString &itemClass, qint32 subscriptionId, Handle bag) override;
    QString RequestPreview(const QString &itemClass, const QString &url, CallbackPtr callback) override;
    Handle GetSettings(const QString &consumerId, const QString &section, Handle keys) override;
    void SetSettings(const QString &consumerId, const QString &section, Handle values) override;
    void Log(const QString &text, qint32 level) override;
    Handle NewList() override;
    void ListAppend(Handle list, const QString &value) override;
    qint32 SubmitRequest(Handle bag, CallbackPtr callback) override;
    void SetSyncSettings(qint32 enabled, const QString &server, const QString &user, const QString &password,
                         qint32 frequencySeconds) override;
    Handle GetSyncSettings() override;
    void SyncNow() override;
    QString BagToText(Handle bag) override;
    Handle ProxyForUrl(const QString &url) override;

    int LiveHandleCount() const override { return m_handles.liveCount(); }
    [[nodiscard]] int PendingCallbackCount() const { return int(m_callbacks.size()); }
    [[nodiscard]] bool IsLinked() const { return m_link && m_link->isConnected(); }

private:
    LinkedSubscribeClient(std::unique_ptr<EngineLink> link, Reopen reopen);
    void attachSink();
    void onLinkClosed();
    [[nodiscard]] bool reconnect();
    void failLostRequests();
    PropertyValue call(const QString &operation, const QList<PropertyValue> &args);
    Handle handleFor(const PropertyValue &value);
    const PropertyValue &listEntry(Handle list, qint32 index) const;
    qint32 registerCallback(CallbackPtr callback);
    void deliver(qint32 callbackId, const BagPtr &message);
    void startReadingAhead(const PropertyValue &listed);
    [[nodiscard]] BagPtr takeReadAhead(qint32 subscriptionId);
    void dropReadAhead();

    std::unique_ptr<EngineLink> m_link;
    HandleTable m_handles;
    QHash<qint32, CallbackPtr> m_callbacks;
    qint32 m_connectionCallbackId = 0;
    qint32 m_lastCallbackId = 0;
    Reopen m_reopen;
    QString m_consumerId;
    bool m_terminated = false;
    QTimer m_retry;

    // Bags read ahead of GetItemBag after a listing of every subscription; each serves once.
    struct ReadAhead
    {
        QList<qint32> listed;
        QHash<qint32, qsizetype> position;
        QHash<qint32, BagPtr> bags;
    };
    ReadAhead m_readAhead;
    quint64 m_readAheadGeneration = 0;
};

} // namespace quillon
