#pragma once

#include "DeliveryStore.h"
#include "EngineMessenger.h"
#include "RequestProcessor.h"
#include "SubscriptionChanges.h"

namespace quillon {

class Outbox;

// The requests of a consumer that delivers articles somewhere (the mail delivery consumer):
// "PENDINGARTICLES", "ACKNOWLEDGE", "SETREADSTATE", "PENDINGREMOVALS", "CONFIRMREMOVALS",
// "SETENCLOSUREFILE", "PENDINGREADMARKS", "CONFIRMREADMARKS",
// each answered at its callback for the consumer the session connected as; and the messages
// "ArticlesAvailable", "ArticlesRemoved" and "ReadMarksChanged" that tell such consumers to ask.
class DeliveryRequests
{
public:
    using Origin = RequestProcessor::Origin;

    // Largest batch one answer carries, and the batch when the request names none.
    static constexpr int kMaxBatch = 1000;
    static constexpr int kDefaultBatch = 200;
    // A batch also stops at this many bytes of text (counted as UTF-8 at its widest), so one
    // answer always fits in a frame however large the articles are; it holds one article at least.
    static constexpr qsizetype kMaxBatchBytes = 16 * 1024 * 1024;

    DeliveryRequests(DeliveryStore &store, Outbox &outbox, EngineMessenger messenger,
                     SubscriptionChanges &changes)
        : m_store(store), m_outbox(outbox), m_messenger(std::move(messenger)), m_changes(changes)
    {
    }

    void registerWith(RequestProcessor &requests);
    // Tells the consumers bound to the subscription what waits for them there, if anything;
    // after an update that stored enclosures also the media consumer, whom a binding does not
    // concern.
    void announce(qint32 subscriptionId, bool newEnclosures);
    // Tells each consumer that has read marks of articles it received to carry into its store.
    void announceReadMarks();

private:
    void pendingArticles(const Origin &origin, const PropertyBag &request);
    void acknowledge(const Origin &origin, const PropertyBag &request);
    void setReadState(const Origin &origin, const PropertyBag &request);
    void pendingRemovals(const Origin &origin, const PropertyBag &request);
    void confirmRemovals(const Origin &origin, const PropertyBag &request);
    void pendingReadMarks(const Origin &origin, const PropertyBag &request);
    void confirmReadMarks(const Origin &origin, const PropertyBag &request);
    void setEnclosureFile(const Origin &origin, const PropertyBag &request);
    void setDeliveryStatus(const Origin &origin, const PropertyBag &request);
    // False (and the request answered with RequestFailed) for a session not connected.
    bool requireConsumer(const Origin &origin);
    void answer(const Origin &origin, const QString &message, BagPtr payload);

    DeliveryStore &m_store;
    Outbox &m_outbox;
    EngineMessenger m_messenger;
    SubscriptionChanges &m_changes;
};

} // namespace quillon
