#include "LinkedSubscribeClient.h"

#include "ItemClass.h"
#include <QCoreApplication>
#include <QLoggingCategory>
#include <QMetaObject>
#include <QSet>
#include <QTimer>

Q_LOGGING_CATEGORY(lcClient, "corvell.quillon.client")

namespace quillon {

namespace {
bool reaches(const PropertyValue &value, const PropertyBag *target)
{
    if (const auto *bag = std::get_if<BagPtr>(&value)) {
        if (bag->get() == target)
            return true;
        for (const auto &entry : (*bag)->entries())
            if (reaches(entry.second, target))
                return true;
    } else if (const auto *list = std::get_if<ListPtr>(&value)) {
        for (const auto &item : (*list)->items())
            if (reaches(item, target))
                return true;
    }
    return false;
}

QList<PropertyValue> args(std::initializer_list<PropertyValue> values)
{
    return QList<PropertyValue>(values);
}

// How often a client whose engine went away looks for it again.
constexpr int kRetryMs = 1000;

// Bags read ahead per round trip: a 10,000-subscription list in 20 trips, each frame well
// under a megabyte.
constexpr qsizetype kReadAheadBatch = 500;

bool isNews(const QString &itemClass)
{
    return isNewsClass(itemClass);
}

// Operations after which a bag read ahead is still what the engine holds.
bool leavesBagsAlone(const QString &operation)
{
    static const QSet<QString> reads = {
        QStringLiteral("GetItemBag"),        QStringLiteral("GetItemBags"),
        QStringLiteral("ListConsumerItems"), QStringLiteral("GetSettings"),
        QStringLiteral("CreateItemRequest"), QStringLiteral("BagToText"),
        QStringLiteral("GetSyncSettings"),   QStringLiteral("ListReaderSubscriptions"),
        QStringLiteral("ProxyForUrl"),       QStringLiteral("Log"),
        QStringLiteral("RequestPreview")};
    return reads.contains(operation);
}
} // namespace

std::shared_ptr<LinkedSubscribeClient> LinkedSubscribeClient::create(std::unique_ptr<EngineLink> link,
                                                                     Reopen reopen)
{
    std::shared_ptr<LinkedSubscribeClient> client(
        new LinkedSubscribeClient(std::move(link), std::move(reopen)));
    client->attachSink();
    std::weak_ptr<LinkedSubscribeClient> weak = client;
    QObject::connect(&client->m_retry, &QTimer::timeout, &client->m_retry, [weak]() {
        if (auto self = weak.lock(); self && self->reconnect())
            self->m_retry.stop();
    });
    return client;
}

LinkedSubscribeClient::LinkedSubscribeClient(std::unique_ptr<EngineLink> link, Reopen reopen)
    : m_link(std::move(link)), m_reopen(std::move(reopen))
{
    m_retry.setInterval(kRetryMs);
}

LinkedSubscribeClient::~LinkedSubscribeClient()
{
    if (m_link) {
        m_link->setMessageSink({});
        m_link->setClosedSink({});
    }
}

void LinkedSubscribeClient::attachSink()
{
    std::weak_ptr<LinkedSubscribeClient> weak = shared_from_this();
    m_link->setMessageSink([weak](qint32 callbackId, const BagPtr &message) {
        if (auto self = weak.lock())
            self->deliver(callbackId, message);
    });
    m_link->setClosedSink([weak]() {
        if (auto self = weak.lock())
            self->onLinkClosed();
    });
}

PropertyValue LinkedSubscribeClient::call(const QString &operation, const QList<PropertyValue> &arguments)
{
    if (!leavesBagsAlone(operation))
        dropReadAhead();
    if ((!m_link || !m_link->isConnected()) && !reconnect())
        throw EngineError(QStringLiteral("The engine is not connected"));
    return m_link->call(operation, arguments);
}

void LinkedSubscribeClient::onLinkClosed()
{
    failLostRequests();
    if (m_reopen && !m_terminated && !m_retry.isActive())
        m_retry.start();
}

// A new link to an engine that was started again; the session's consumer is registered anew.
bool LinkedSubscribeClient::reconnect()
{
    if (!m_reopen || m_terminated)
        return false;
    if (m_link && m_link->isConnected())
        return true;
    try {
        std::unique_ptr<EngineLink> link = m_reopen();
        if (!m_consumerId.isEmpty())
            link->call(QStringLiteral("Connect"), args({m_consumerId, m_connectionCallbackId}));
        if (m_link) {
            m_link->setMessageSink({});
            m_link->setClosedSink({});
        }
        m_link = std::move(link);
        attachSink();
        qCInfo(lcClient) << "engine connection restored";
        return true;
    } catch (const std::exception &e) {
        qCDebug(lcClient) << "engine not back yet:" << e.what();
        return false;
    }
}

// Every answer that the old connection still owed comes as an error, never not at all.
void LinkedSubscribeClient::failLostRequests()
{
    for (auto it = m_callbacks.cbegin(); it != m_callbacks.cend(); ++it) {
        if (it.key() == m_connectionCallbackId)
            continue;
        auto error = PropertyBag::create();
        error->setText(QStringLiteral("ERROR"), QStringLiteral("The engine connection was lost"));
        std::weak_ptr<LinkedSubscribeClient> weak = shared_from_this();
        QMetaObject::invokeMethod(
            &m_retry,
            [weak, id = it.key(), error]() {
                if (auto self = weak.lock())
                    self->deliver(id, error);
            },
            Qt::QueuedConnection);
    }
}

Handle LinkedSubscribeClient::handleFor(const PropertyValue &value)
{
    if (const auto *b = std::get_if<BagPtr>(&value))
        return m_handles.addBag(*b);
    if (const auto *l = std::get_if<ListPtr>(&value))
        return m_handles.addList(*l);
    return 0;
}

qint32 LinkedSubscribeClient::registerCallback(CallbackPtr callback)
{
    if (!callback)
        return 0;
    m_callbacks.insert(++m_lastCallbackId, std::move(callback));
    return m_lastCallbackId;
}

void LinkedSubscribeClient::deliver(qint32 callbackId, const BagPtr &message)
{
    const CallbackPtr callback = m_callbacks.value(callbackId);
    if (!callback || !message) {
        qCDebug(lcClient) << "message for unknown callback" << callbackId << "dropped";
        return;
    }
    // Whatever the message tells of may have changed a bag read ahead.
    dropReadAhead();
    if (callbackId != m_connectionCallbackId)
        m_callbacks.remove(callbackId);
    else if (message->text(QStringLiteral("MESSAGE")) == QLatin1String("EngineTerminated"))
        m_terminated = true; // stopped on purpose: no coming back to wait for
    // Keep ourselves alive: the callback may drop the last reference to the client.
    auto self = shared_from_this();
    Handle handle = m_handles.addBag(message);
    try {
        callback->ProcessMessage(handle);
    } catch (const std::exception &e) {
        qCWarning(lcClient) << "callback failed:" << e.what();
    }
    m_handles.release(handle);
}

void LinkedSubscribeClient::Connect(const QString &consumerId, CallbackPtr callback)
{
    const qint32 previous = m_connectionCallbackId;
    const qint32 id = registerCallback(std::move(callback));
    try {
        call(QStringLiteral("Connect"), args({consumerId, id}));
    } catch (...) {
        m_callbacks.remove(id);
        throw;
    }
    m_callbacks.remove(previous);
    m_connectionCallbackId = id;
    m_consumerId = consumerId;
}

void LinkedSubscribeClient::ReleaseHandle(Handle handle)
{
    m_handles.release(handle);
}

void LinkedSubscribeClient::RemoveItem(const QString &itemClass, qint32 subscriptionId, qint32 flag)
{
    call(QStringLiteral("RemoveItem"), args({itemClass, subscriptionId, flag}));
}

void LinkedSubscribeClient::BindItem(const QString &consumerId, const QString &itemClass,
                                     qint32 subscriptionId, qint32 flag)
{
    call(QStringLiteral("BindItem"), args({consumerId, itemClass, subscriptionId, flag}));
}

Handle LinkedSubscribeClient::CreateItemRequest(const QString &itemClass, const QString &title,
                                                const QString &url)
{
    return handleFor(call(QStringLiteral("CreateItemRequest"), args({itemClass, title, url})));
}

Handle LinkedSubscribeClient::ListConsumerItems(const QString &consumerId, const QString &itemClass)
{
    const PropertyValue listed = call(QStringLiteral("ListConsumerItems"), args({consumerId, itemClass}));
    if (consumerId == QLatin1String("*") && isNews(itemClass))
        startReadingAhead(listed);
    return handleFor(listed);
}

Handle LinkedSubscribeClient::GetItemBag(const QString &itemClass, qint32 subscriptionId, qint32 reserved)
{
    if (reserved == 0 && isNews(itemClass)) {
        if (BagPtr bag = takeReadAhead(subscriptionId))
            return m_handles.addBag(bag);
    }
    return handleFor(call(QStringLiteral("GetItemBag"), args({itemClass, subscriptionId, reserved})));
}

Handle LinkedSubscribeClient::GetItemBags(const QString &itemClass, Handle ids)
{
    return handleFor(call(QStringLiteral("GetItemBags"), args({itemClass, m_handles.list(ids)})));
}

void LinkedSubscribeClient::startReadingAhead(const PropertyValue &listed)
{
    dropReadAhead();
    const auto *list = std::get_if<ListPtr>(&listed);
    // Values in the engine change without a word to us (fetches), so what is read ahead only
    // serves the reads that follow the listing before control returns to the event loop.
    if (!list || !*list || !QCoreApplication::instance())
        return;
    m_readAhead.listed.reserve((*list)->size());
    for (const PropertyValue &id : (*list)->items()) {
        m_readAhead.position.insert(valueLong(id), m_readAhead.listed.size());
        m_readAhead.listed.append(valueLong(id));
    }
    std::weak_ptr<LinkedSubscribeClient> weak = weak_from_this();
    QTimer::singleShot(0, QCoreApplication::instance(), [weak, generation = m_readAheadGeneration]() {
        if (auto self = weak.lock(); self && self->m_readAheadGeneration == generation)
            self->dropReadAhead();
    });
}

BagPtr LinkedSubscribeClient::takeReadAhead(qint32 subscriptionId)
{
    if (BagPtr bag = m_readAhead.bags.take(subscriptionId))
        return bag;
    const auto at = m_readAhead.position.constFind(subscriptionId);
    if (at == m_readAhead.position.cend())
        return {};
    // The next batch of the listing, from this subscription on.
    auto ids = PropertyList::create();
    const QList<qint32> batch = m_readAhead.listed.mid(*at, kReadAheadBatch);
    for (const qint32 id : batch)
        ids->append(id);
    PropertyValue answer;
    try {
        if (m_link && m_link->isConnected())
            answer = m_link->call(QStringLiteral("GetItemBags"), args({kNewsClass, ids}));
    } catch (const EngineError &e) {
        qCDebug(lcClient) << "reading ahead failed, reading one by one:" << e.message();
    }
    const auto *bags = std::get_if<ListPtr>(&answer);
    if (!bags || !*bags || (*bags)->size() != batch.size()) {
        dropReadAhead();
        return {};
    }
    for (qsizetype i = 0; i < batch.size(); ++i) {
        m_readAhead.position.remove(batch.at(i));
        const auto *bag = std::get_if<BagPtr>(&(*bags)->at(i));
        // An empty bag: removed meanwhile; the single read says so.
        if (bag && *bag && (*bag)->find(QStringLiteral("SUBSCRIPTIONID")))
            m_readAhead.bags.insert(batch.at(i), *bag);
    }
    return m_readAhead.bags.take(subscriptionId);
}

void LinkedSubscribeClient::dropReadAhead()
{
    ++m_readAheadGeneration;
    if (m_readAhead.listed.isEmpty() && m_readAhead.bags.isEmpty())
        return;
    m_readAhead = {};
}

Handle LinkedSubscribeClient::NewBag()
{
    return m_handles.addBag(PropertyBag::create());
}

void LinkedSubscribeClient::SetHandleValue(Handle bag, const QString &name, Handle value)
{
    const BagPtr target = m_handles.bag(bag);
    const PropertyValue stored = m_handles.value(value);
    // A bag inside itself could never be copied, sent or freed.
    if (reaches(stored, target.get()))
        throw EngineError(QStringLiteral("A bag cannot hold itself"));
    target->set(name, stored);
}

void LinkedSubscribeClient::SetStringValue(Handle bag, const QString &name, const QString &value)
{
    m_handles.bag(bag)->set(name, value);
}

void LinkedSubscribeClient::SetLongValue(Handle bag, const QString &name, qint32 value)
{
    m_handles.bag(bag)->set(name, value);
}

QString LinkedSubscribeClient::GetStringValue(Handle bag, const QString &name)
{
    return m_handles.bag(bag)->text(name);
}

qint32 LinkedSubscribeClient::GetLongValue(Handle bag, const QString &name)
{
    return m_handles.bag(bag)->number(name);
}

Handle LinkedSubscribeClient::GetHandleValue(Handle bag, const QString &name)
{
    const PropertyValue *value = m_handles.bag(bag)->find(name);
    return value ? handleFor(*value) : 0;
}

Handle LinkedSubscribeClient::ListNames(Handle bag)
{
    auto names = PropertyList::create();
    for (const QString &name : m_handles.bag(bag)->names())
        names->append(name);
    return m_handles.addList(names);
}

qint32 LinkedSubscribeClient::ListCount(Handle list)
{
    return m_handles.list(list)->size();
}

const PropertyValue &LinkedSubscribeClient::listEntry(Handle list, qint32 index) const
{
    const ListPtr entries = m_handles.list(list);
    if (index < 0 || index >= entries->size())
        throw EngineError(
            QStringLiteral("List index %1 out of range (count %2)").arg(index).arg(entries->size()));
    return entries->at(index);
}

Handle LinkedSubscribeClient::ListHandle(Handle list, qint32 index)
{
    return handleFor(listEntry(list, index));
}

qint32 LinkedSubscribeClient::ListLong(Handle list, qint32 index)
{
    return valueLong(listEntry(list, index));
}

QString LinkedSubscribeClient::ListString(Handle list, qint32 index)
{
    return valueText(listEntry(list, index));
}

Handle LinkedSubscribeClient::ListReaderSubscriptions(const QString &readerName)
{
    return handleFor(call(QStringLiteral("ListReaderSubscriptions"), args({readerName})));
}

void LinkedSubscribeClient::UpdateItem(const QString &itemClass, qint32 subscriptionId, Handle bag)
{
    call(QStringLiteral("UpdateItem"), args({itemClass, subscriptionId, m_handles.bag(bag)}));
}

QString LinkedSubscribeClient::RequestPreview(const QString &itemClass, const QString &url,
                                              CallbackPtr callback)
{
    const qint32 id = registerCallback(std::move(callback));
    try {
        return valueText(call(QStringLiteral("RequestPreview"), args({itemClass, url, id})));
    } catch (...) {
        m_callbacks.remove(id);
        throw;
    }
}

Handle LinkedSubscribeClient::GetSettings(const QString &consumerId, const QString &section, Handle keys)
{
    return handleFor(call(QStringLiteral("GetSettings"), args({consumerId, section, m_handles.bag(keys)})));
}

void LinkedSubscribeClient::SetSettings(const QString &consumerId, const QString &section, Handle values)
{
    call(QStringLiteral("SetSettings"), args({consumerId, section, m_handles.bag(values)}));
}

void LinkedSubscribeClient::Log(const QString &text, qint32 level)
{
    call(QStringLiteral("Log"), args({text, level}));
}

Handle LinkedSubscribeClient::NewList()
{
    return m_handles.addList(PropertyList::create());
}

void LinkedSubscribeClient::ListAppend(Handle list, const QString &value)
{
    m_handles.list(list)->append(value);
}

qint32 LinkedSubscribeClient::SubmitRequest(Handle bag, CallbackPtr callback)
{
    const BagPtr request = m_handles.bag(bag);
    const qint32 id = registerCallback(std::move(callback));
    try {
        return valueLong(call(QStringLiteral("SubmitRequest"), args({request, id})));
    } catch (...) {
        m_callbacks.remove(id);
        throw;
    }
}

void LinkedSubscribeClient::SetSyncSettings(qint32 enabled, const QString &server, const QString &user,
                                            const QString &password, qint32 frequencySeconds)
{
    call(QStringLiteral("SetSyncSettings"), args({enabled, server, user, password, frequencySeconds}));
}

Handle LinkedSubscribeClient::GetSyncSettings()
{
    return handleFor(call(QStringLiteral("GetSyncSettings"), {}));
}

void LinkedSubscribeClient::SyncNow()
{
    call(QStringLiteral("SyncNow"), {});
}

Handle LinkedSubscribeClient::ProxyForUrl(const QString &url)
{
    return handleFor(call(QStringLiteral("ProxyForUrl"), args({url})));
}

QString LinkedSubscribeClient::BagToText(Handle bag)
{
    return valueText(call(QStringLiteral("BagToText"), args({m_handles.bag(bag)})));
}

} // namespace quillon
