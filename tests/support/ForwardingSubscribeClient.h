#pragma once

#include "SubscribeClient.h"

// Passes every call to another client; tests override the calls they want to change.
class ForwardingSubscribeClient : public quillon::SubscribeClient
{
public:
    using Handle = quillon::Handle;
    using CallbackPtr = quillon::CallbackPtr;

    explicit ForwardingSubscribeClient(quillon::SubscribeClientPtr inner) : m_inner(std::move(inner)) {}

    void Connect(const QString &consumerId, CallbackPtr callback) override
    {
        m_inner->Connect(consumerId, callback);
    }
    void ReleaseHandle(Handle handle) override { m_inner->ReleaseHandle(handle); }
    void RemoveItem(const QString &itemClass, qint32 subscriptionId, qint32 flag) override
    {
        m_inner->RemoveItem(itemClass, subscriptionId, flag);
    }
    void BindItem(const QString &consumerId, const QString &itemClass, qint32 subscriptionId,
                  qint32 flag) override
    {
        m_inner->BindItem(consumerId, itemClass, subscriptionId, flag);
    }
    Handle CreateItemRequest(const QString &itemClass, const QString &title, const QString &url) override
    {
        return m_inner->CreateItemRequest(itemClass, title, url);
    }
    Handle ListConsumerItems(const QString &consumerId, const QString &itemClass) override
    {
        return m_inner->ListConsumerItems(consumerId, itemClass);
    }
    Handle GetItemBag(const QString &itemClass, qint32 subscriptionId, qint32 reserved) override
    {
        return m_inner->GetItemBag(itemClass, subscriptionId, reserved);
    }
    Handle GetItemBags(const QString &itemClass, Handle ids) override
    {
        return m_inner->GetItemBags(itemClass, ids);
    }
    Handle NewBag() override { return m_inner->NewBag(); }
    void SetHandleValue(Handle bag, const QString &name, Handle value) override
    {
        m_inner->SetHandleValue(bag, name, value);
    }
    void SetStringValue(Handle bag, const QString &name, const QString &value) override
    {
        m_inner->SetStringValue(bag, name, value);
    }
    void SetLongValue(Handle bag, const QString &name, qint32 value) override
    {
        m_inner->SetLongValue(bag, name, value);
    }
    QString GetStringValue(Handle bag, const QString &name) override
    {
        return m_inner->GetStringValue(bag, name);
    }
    qint32 GetLongValue(Handle bag, const QString &name) override { return m_inner->GetLongValue(bag, name); }
    Handle GetHandleValue(Handle bag, const QString &name) override
    {
        return m_inner->GetHandleValue(bag, name);
    }
    Handle ListNames(Handle bag) override { return m_inner->ListNames(bag); }
    qint32 ListCount(Handle list) override { return m_inner->ListCount(list); }
    Handle ListHandle(Handle list, qint32 index) override { return m_inner->ListHandle(list, index); }
    qint32 ListLong(Handle list, qint32 index) override { return m_inner->ListLong(list, index); }
    QString ListString(Handle list, qint32 index) override { return m_inner->ListString(list, index); }
    Handle ListReaderSubscriptions(const QString &readerName) override
    {
        return m_inner->ListReaderSubscriptions(readerName);
    }
    void UpdateItem(const QString &itemClass, qint32 subscriptionId, Handle bag) override
    {
        m_inner->UpdateItem(itemClass, subscriptionId, bag);
    }
    QString RequestPreview(const QString &itemClass, const QString &url, CallbackPtr callback) override
    {
        return m_inner->RequestPreview(itemClass, url, callback);
    }
    Handle GetSettings(const QString &consumerId, const QString &section, Handle keys) override
    {
        return m_inner->GetSettings(consumerId, section, keys);
    }
    void SetSettings(const QString &consumerId, const QString &section, Handle values) override
    {
        m_inner->SetSettings(consumerId, section, values);
    }
    void Log(const QString &text, qint32 level) override { m_inner->Log(text, level); }
    Handle NewList() override { return m_inner->NewList(); }
    void ListAppend(Handle list, const QString &value) override { m_inner->ListAppend(list, value); }
    qint32 SubmitRequest(Handle bag, CallbackPtr callback) override
    {
        return m_inner->SubmitRequest(bag, callback);
    }
    void SetSyncSettings(qint32 enabled, const QString &server, const QString &user, const QString &password,
                         qint32 frequencySeconds) override
    {
        m_inner->SetSyncSettings(enabled, server, user, password, frequencySeconds);
    }
    Handle GetSyncSettings() override { return m_inner->GetSyncSettings(); }
    void SyncNow() override { m_inner->SyncNow(); }
    QString BagToText(Handle bag) override { return m_inner->BagToText(bag); }
    int LiveHandleCount() const override { return m_inner->LiveHandleCount(); }

protected:
    quillon::SubscribeClientPtr m_inner;
};
