#include "EngineCorePrivate.h"

#include "BagText.h"
#include "BindingRule.h"
#include "CoreLogging.h"
#include "EngineError.h"
#include "EngineMessages.h"
#include "GeneralSettingKeys.h"
#include "ItemClass.h"
#include "OutlineBags.h"
#include "SqlTransaction.h"
#include "SyncSettings.h"

// The operations a client calls, one handler each; EngineCorePrivate.cpp opens the stores they use
// and dispatches to them.
namespace quillon {

namespace {
QString specificsSection(qint32 subscriptionId)
{
    return QStringLiteral("SubscriptionSpecifics_%1").arg(subscriptionId);
}

} // namespace

void EngineCorePrivate::requireNewsClass(const QString &itemClass)
{
    if (!isNewsClass(itemClass))
        throw EngineError(
            QStringLiteral("Unknown item class '%1'; the engine keeps NEWS items only").arg(itemClass));
}

PropertyValue EngineCorePrivate::connect(const Call &call)
{
    const QString consumerId = call.args.text(0);
    if (consumerId.trimmed().isEmpty() || consumerId == QLatin1String("*"))
        throw EngineError(QStringLiteral("Connect needs a consumer ID"));
    sessions.connect(call.session, consumerId, call.args.number(1));
    qCInfo(lcCore) << "consumer connected:" << consumerId << "now" << sessions.connectedConsumers();
    return {};
}

PropertyValue EngineCorePrivate::removeItem(const Call &call)
{
    requireNewsClass(call.args.text(0));
    const qint32 id = call.args.number(1);
    if (!m_subscriptions->remove(id)) {
        qCDebug(lcCore) << "RemoveItem of unknown subscription" << id;
        return {};
    }
    m_settings->removeSection(specificsSection(id));
    qCInfo(lcCore) << sessions.consumerOf(call.session) << "removed subscription" << id;
    return {};
}

PropertyValue EngineCorePrivate::bindItem(const Call &call)
{
    const QString consumerId = call.args.text(0);
    requireNewsClass(call.args.text(1));
    const qint32 id = call.args.number(2);
    const qint32 flag = call.args.number(3);
    if (consumerId.trimmed().isEmpty() || consumerId == QLatin1String("*"))
        throw EngineError(QStringLiteral("BindItem needs a consumer ID"));
    m_subscriptions->requireExists(id);

    const BindingRule::Action action = BindingRule::decide(m_bindings->state(consumerId, id), flag);
    switch (action) {
    case BindingRule::Action::Bind:
        m_bindings->bind(consumerId, id, false, now());
        break;
    case BindingRule::Action::Confirm:
        m_bindings->confirm(consumerId, id);
        break;
    case BindingRule::Action::UnbindDroppingDelivered:
        m_bindings->unbind(consumerId, id);
        [[fallthrough]];
    case BindingRule::Action::DropDelivered:
        m_bindings->dropDelivered(consumerId, id);
        break;
    case BindingRule::Action::UnbindKeepingDelivered:
        m_bindings->unbind(consumerId, id);
        break;
    }
    if (BindingRule::announces(action)) {
        const bool bound = action == BindingRule::Action::Bind;
        m_outbox.toConnected(
            EngineMessages::bindingChanged(sessions.consumerOf(call.session), consumerId, bound, id));
        m_delivery->announce(id, false);
    }
    return {};
}

PropertyValue EngineCorePrivate::createItemRequest(const Call &call)
{
    auto bag = PropertyBag::create();
    bag->setText(QStringLiteral("REQUEST"), QStringLiteral("ADD"));
    bag->setText(QStringLiteral("CLASS"), call.args.text(0));
    bag->setText(QStringLiteral("TITLE"), call.args.text(1));
    bag->setText(QStringLiteral("URL"), call.args.text(2));
    return bag;
}

PropertyValue EngineCorePrivate::listConsumerItems(const Call &call)
{
    const QString consumerId = call.args.text(0);
    requireNewsClass(call.args.text(1));
    const QList<qint32> ids = consumerId == QLatin1String("*") ? m_subscriptions->allIds()
                                                               : m_bindings->subscriptionsOf(consumerId);
    auto list = PropertyList::create();
    for (const qint32 id : ids)
        list->append(id);
    return list;
}

PropertyValue EngineCorePrivate::getItemBag(const Call &call)
{
    requireNewsClass(call.args.text(0));
    const qint32 id = call.args.number(1);
    (void)call.args.number(2); // reserved, always 0
    return m_subscriptions->itemBag(id);
}

PropertyValue EngineCorePrivate::getItemBags(const Call &call)
{
    requireNewsClass(call.args.text(0));
    QList<qint32> ids;
    for (const PropertyValue &id : call.args.list(1)->items())
        ids.append(valueLong(id));
    const QHash<qint32, BagPtr> found = m_subscriptions->itemBags(ids);
    auto bags = PropertyList::create();
    for (const qint32 id : std::as_const(ids)) {
        // One bag per ID in the order asked; an ID that names nothing gives an empty bag.
        const BagPtr bag = found.value(id);
        bags->append(bag ? bag : PropertyBag::create());
    }
    return bags;
}

PropertyValue EngineCorePrivate::listReaderSubscriptions(const Call &call)
{
    const ReaderImporter *importer = importers.find(call.args.text(0));
    if (!importer || !importer->available()) {
        qCDebug(lcCore) << "no subscriptions found for reader" << call.args.text(0);
        return PropertyList::create();
    }
    return OutlineBags::feeds(importer->subscriptions());
}

PropertyValue EngineCorePrivate::updateItem(const Call &call)
{
    requireNewsClass(call.args.text(0));
    m_subscriptions->update(call.args.number(1), *call.args.bag(2), now());
    return {};
}

PropertyValue EngineCorePrivate::requestPreview(const Call &call)
{
    requireNewsClass(call.args.text(0));
    const QString url = call.args.text(1);
    const qint32 callbackId = call.args.number(2);
    const QString requestId = QStringLiteral("preview-%1").arg(++m_lastRequest);
    qCDebug(lcCore) << "preview" << requestId << "of" << url;
    m_documents->preview(call.session, callbackId, url);
    return requestId;
}

PropertyValue EngineCorePrivate::getSettings(const Call &call)
{
    const QString consumerId = call.args.text(0);
    const QString section = call.args.text(1);
    auto result = PropertyBag::create();
    for (const auto &[key, fallback] : call.args.bag(2)->entries()) {
        const auto stored = m_settings->value(consumerId, section, key);
        result->set(key, stored ? PropertyValue(*stored) : deepCopy(fallback));
    }
    return result;
}

PropertyValue EngineCorePrivate::setSettings(const Call &call)
{
    m_defaults->forget();
    const QString consumerId = call.args.text(0);
    const QString section = call.args.text(1);
    QStringList keys;
    for (const auto &[key, value] : call.args.bag(2)->entries()) {
        keys.append(key);
        if (std::holds_alternative<BagPtr>(value) || std::holds_alternative<ListPtr>(value))
            throw EngineError(QStringLiteral("The setting %1 must be text or a number").arg(key));
        if (std::holds_alternative<std::monostate>(value))
            m_settings->removeValue(consumerId, section, key);
        else
            m_settings->setValue(consumerId, section, key, valueText(value));
    }
    m_follower->written(consumerId, section, keys);
    return {};
}

PropertyValue EngineCorePrivate::log(const Call &call)
{
    m_log->write(call.args.number(1), sessions.consumerOf(call.session), call.args.text(0), now());
    return {};
}

PropertyValue EngineCorePrivate::submitRequest(const Call &call)
{
    const BagPtr request = call.args.bag(0);
    const qint32 number = ++m_lastRequest;
    m_requests->process({call.session, sessions.consumerOf(call.session), call.args.number(1), now()},
                        *request);
    return number;
}

PropertyValue EngineCorePrivate::setSyncSettings(const Call &call)
{
    SyncSettings(*m_settings).write(call.args);
    m_sync->follow();
    return {};
}

PropertyValue EngineCorePrivate::getSyncSettings(const Call &)
{
    return m_sync->settingsBag();
}

PropertyValue EngineCorePrivate::syncNow(const Call &)
{
    m_sync->runNow();
    return {};
}

PropertyValue EngineCorePrivate::bagToText(const Call &call)
{
    return BagText::render(*call.args.bag(0));
}

PropertyValue EngineCorePrivate::proxyForUrl(const Call &call)
{
    const FeedAddress::Resolved address = resolver.resolve(call.args.text(0));
    const ProxyRoute route = policy->route(address.url);
    auto bag = PropertyBag::create();
    bag->setText(QStringLiteral("URL"), address.url.toString(QUrl::RemoveUserInfo));
    bag->setText(QStringLiteral("PROXY"), route.proxy);
    bag->setText(QStringLiteral("REASON"), address.ok() ? route.reason : address.error);
    const QString login = route.login == ProxyRoute::Login::Password    ? route.user
                          : route.login == ProxyRoute::Login::Negotiate ? QStringLiteral("(current user)")
                                                                        : QString();
    bag->setText(QStringLiteral("LOGIN"), login);
    return bag;
}

} // namespace quillon
