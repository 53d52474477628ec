#include "DeliveryRequests.h"

#include "CoreLogging.h"
#include "EngineMessages.h"
#include "Outbox.h"

namespace quillon {

namespace {
// "ARTICLEIDS": a list of integers or numeric texts (the client appends texts), or one text
// of IDs separated by commas. Anything else is skipped.
QList<qint64> articleIds(const PropertyBag &request)
{
    QList<qint64> ids;
    const auto take = [&ids](const QString &text) {
        bool ok = false;
        const qint64 id = text.trimmed().toLongLong(&ok);
        if (ok && id > 0)
            ids.append(id);
    };
    if (const ListPtr list = request.list(QStringLiteral("ARTICLEIDS"))) {
        for (const PropertyValue &value : list->items())
            take(valueText(value));
    } else if (request.contains(QStringLiteral("ARTICLEIDS"))) {
        for (const QString &part : request.text(QStringLiteral("ARTICLEIDS")).split(QLatin1Char(',')))
            take(part);
    }
    return ids;
}

int batchSize(const PropertyBag &request)
{
    if (!request.contains(QStringLiteral("LIMIT")))
        return DeliveryRequests::kDefaultBatch;
    return std::clamp(request.number(QStringLiteral("LIMIT")), 1, DeliveryRequests::kMaxBatch);
}

// The most bytes a value's texts can take on the wire: three per UTF-16 unit.
qsizetype widestBytes(const PropertyValue &value)
{
    if (const auto *text = std::get_if<QString>(&value))
        return 3 * text->size() + 9;
    if (const auto *bag = std::get_if<BagPtr>(&value); bag && *bag) {
        qsizetype bytes = 9;
        for (const auto &[name, entry] : (*bag)->entries())
            bytes += 3 * name.size() + widestBytes(entry);
        return bytes;
    }
    if (const auto *list = std::get_if<ListPtr>(&value); list && *list) {
        qsizetype bytes = 9;
        for (const PropertyValue &item : (*list)->items())
            bytes += widestBytes(item);
        return bytes;
    }
    return 9;
}

BagPtr countPayload(int count)
{
    auto payload = PropertyBag::create();
    payload->setLong(QStringLiteral("ITEMCOUNT"), count);
    return payload;
}

BagPtr itemsPayload(const ListPtr &items)
{
    BagPtr payload = countPayload(items->size());
    payload->set(QStringLiteral("ITEMS"), items);
    return payload;
}
} // namespace

void DeliveryRequests::registerWith(RequestProcessor &requests)
{
    const auto kind = [this, &requests](const char *name, void (DeliveryRequests::*handler)(
                                                              const Origin &, const PropertyBag &)) {
        requests.registerKind(QLatin1String(name),
                              [this, handler](const Origin &origin, const PropertyBag &request) {
                                  if (requireConsumer(origin))
                                      (this->*handler)(origin, request);
                              });
    };
    kind("PENDINGARTICLES", &DeliveryRequests::pendingArticles);
    kind("ACKNOWLEDGE", &DeliveryRequests::acknowledge);
    kind("SETREADSTATE", &DeliveryRequests::setReadState);
    kind("PENDINGREMOVALS", &DeliveryRequests::pendingRemovals);
    kind("CONFIRMREMOVALS", &DeliveryRequests::confirmRemovals);
    kind("PENDINGREADMARKS", &DeliveryRequests::pendingReadMarks);
    kind("CONFIRMREADMARKS", &DeliveryRequests::confirmReadMarks);
    kind("SETENCLOSUREFILE", &DeliveryRequests::setEnclosureFile);
    kind("SETDELIVERYSTATUS", &DeliveryRequests::setDeliveryStatus);
}

bool DeliveryRequests::requireConsumer(const Origin &origin)
{
    if (!origin.consumerId.isEmpty())
        return true;
    m_outbox.toCallback(
        origin.session, origin.callbackId,
        EngineMessages::failure(QStringLiteral("Delivery requests need a connected consumer")));
    return false;
}

void DeliveryRequests::answer(const Origin &origin, const QString &message, BagPtr payload)
{
    m_outbox.toCallback(origin.session, origin.callbackId,
                        EngineMessages::message(message, std::move(payload)));
}

void DeliveryRequests::pendingArticles(const Origin &origin, const PropertyBag &request)
{
    const int limit = batchSize(request);
    const qint32 subscriptionId = request.contains(QStringLiteral("SUBSCRIPTIONID"))
                                      ? request.number(QStringLiteral("SUBSCRIPTIONID"))
                                      : 0;
    // A consumer may ask for the next batch before it acknowledged this one: AFTER skips
    // what it already holds.
    const qint64 after =
        request.contains(QStringLiteral("AFTER")) ? std::max(request.number(QStringLiteral("AFTER")), 0) : 0;
    // One more than asked tells whether another batch waits.
    ListPtr items = m_store.pending(origin.consumerId, std::max(subscriptionId, 0), limit + 1, after);
    int taken = 0;
    for (qsizetype bytes = 0; taken < items->size() && taken < limit; ++taken) {
        bytes += widestBytes(items->at(taken));
        if (taken > 0 && bytes > kMaxBatchBytes)
            break;
    }
    const bool more = items->size() > taken;
    if (more) {
        auto trimmed = PropertyList::create();
        for (int i = 0; i < taken; ++i)
            trimmed->append(items->at(i));
        items = trimmed;
    }
    BagPtr payload = countPayload(items->size());
    payload->set(QStringLiteral("ITEMS"), items);
    payload->setLong(QStringLiteral("MORE"), more ? 1 : 0);
    answer(origin, QStringLiteral("PendingArticles"), payload);
}

void DeliveryRequests::acknowledge(const Origin &origin, const PropertyBag &request)
{
    const int marked = m_store.acknowledge(origin.consumerId, articleIds(request), origin.now);
    answer(origin, QStringLiteral("AcknowledgeResult"), countPayload(marked));
}

void DeliveryRequests::setReadState(const Origin &origin, const PropertyBag &request)
{
    const bool read = request.number(QStringLiteral("READ")) == 1;
    const DeliveryStore::ReadChange change = m_store.setRead(origin.consumerId, articleIds(request), read);
    answer(origin, QStringLiteral("ReadStateResult"), countPayload(change.count));
    // The window shows the counts: a mark set in the mail program reaches it without a reload.
    m_changes.countsChanged(change.subscriptions);
    if (change.count > 0)
        announceReadMarks();
}

void DeliveryRequests::pendingReadMarks(const Origin &origin, const PropertyBag &request)
{
    answer(origin, QStringLiteral("PendingReadMarks"),
           itemsPayload(m_store.readMarks(origin.consumerId, batchSize(request))));
}

void DeliveryRequests::confirmReadMarks(const Origin &origin, const PropertyBag &request)
{
    const int confirmed =
        m_store.confirmReadMarks(origin.consumerId, request.number(QStringLiteral("MARKID")));
    answer(origin, QStringLiteral("ReadMarksConfirmed"), countPayload(confirmed));
}

void DeliveryRequests::announceReadMarks()
{
    QList<std::pair<QString, int>> waiting;
    try {
        waiting = m_store.readMarksWaiting();
    } catch (const std::exception &e) {
        qCWarning(lcCore) << "cannot count read marks to deliver" << e.what();
        return;
    }
    for (const auto &[consumerId, count] : waiting) {
        BagPtr payload = countPayload(count);
        payload->setText(QStringLiteral("CONSUMERID"), consumerId);
        m_messenger.toConnected(EngineMessages::message(QStringLiteral("ReadMarksChanged"), payload));
    }
}

void DeliveryRequests::pendingRemovals(const Origin &origin, const PropertyBag &request)
{
    answer(origin, QStringLiteral("PendingRemovals"),
           itemsPayload(m_store.removals(origin.consumerId, batchSize(request))));
}

void DeliveryRequests::confirmRemovals(const Origin &origin, const PropertyBag &request)
{
    const int confirmed = m_store.confirmRemovals(origin.consumerId, articleIds(request));
    answer(origin, QStringLiteral("RemovalsConfirmed"), countPayload(confirmed));
}

void DeliveryRequests::setDeliveryStatus(const Origin &origin, const PropertyBag &request)
{
    const qint32 id = request.number(QStringLiteral("SUBSCRIPTIONID"));
    m_store.setDeliveryStatus(origin.consumerId, id, request.text(QStringLiteral("STATUS")));
    answer(origin, QStringLiteral("DeliveryStatusResult"), countPayload(1));
    // The window marks a subscription whose articles cannot be stored, as it marks a failed feed.
    m_changes.countsChanged({id});
}

void DeliveryRequests::setEnclosureFile(const Origin &origin, const PropertyBag &request)
{
    const QString file =
        request.contains(QStringLiteral("FILE")) ? request.text(QStringLiteral("FILE")) : QString();
    const int changed = m_store.setEnclosureFile(request.number(QStringLiteral("ARTICLEID")),
                                                 request.text(QStringLiteral("URL")), file);
    answer(origin, QStringLiteral("EnclosureFileSet"), countPayload(changed));
}

void DeliveryRequests::announce(qint32 subscriptionId, bool newEnclosures)
{
    QList<DeliveryStore::Counts> waiting;
    try {
        waiting = m_store.waiting(subscriptionId, newEnclosures);
    } catch (const std::exception &e) {
        qCWarning(lcCore) << "cannot count deliveries of subscription" << subscriptionId << e.what();
        return;
    }
    for (const DeliveryStore::Counts &counts : waiting) {
        for (const auto &[name, count] : {std::pair{QStringLiteral("ArticlesAvailable"), counts.pending},
                                          std::pair{QStringLiteral("ArticlesRemoved"), counts.removals}}) {
            if (count <= 0)
                continue;
            BagPtr payload = countPayload(count);
            payload->setText(QStringLiteral("CONSUMERID"), counts.consumerId);
            payload->setLong(QStringLiteral("SUBSCRIPTIONID"), subscriptionId);
            m_messenger.toConnected(EngineMessages::message(name, payload));
        }
    }
}

} // namespace quillon
