#pragma once

#include "PropertyBag.h"

#include <QDateTime>
#include <QHash>
#include <QString>

#include <functional>

namespace quillon {

class BindingStore;
class Outbox;
class SubscriptionStore;

// Carries out the requests of SubmitRequest by their REQUEST kind: ADD itself, other kinds
// through the handlers registered for them. Every request is answered at its callback; one
// the engine cannot carry out is answered with RequestFailed.
class RequestProcessor
{
public:
    struct Origin
    {
        qint32 session = 0;
        QString consumerId;
        qint32 callbackId = 0;
        QDateTime now;
    };

    RequestProcessor(SubscriptionStore &subscriptions, BindingStore &bindings, Outbox &outbox)
        : m_subscriptions(subscriptions), m_bindings(bindings), m_outbox(outbox)
    {
    }

    using Handler = std::function<void(const Origin &origin, const PropertyBag &request)>;

    void process(const Origin &origin, const PropertyBag &request);
    // kind is matched without regard to case.
    void registerKind(const QString &kind, Handler handler);

private:
    void add(const Origin &origin, const PropertyBag &request);
    void refuse(const Origin &origin, const QString &error);

    SubscriptionStore &m_subscriptions;
    BindingStore &m_bindings;
    Outbox &m_outbox;
    QHash<QString, Handler> m_handlers; // by upper-case kind
};

} // namespace quillon
