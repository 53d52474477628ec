#include "Outbox.h"

#include "SessionTable.h"

namespace quillon {

void Outbox::toCallback(SessionId session, qint32 callbackId, BagPtr message)
{
    m_pending.append({std::move(message), session, callbackId, false});
}

void Outbox::toConnected(BagPtr message, SessionId except)
{
    m_pending.append({std::move(message), except, 0, true});
}

void Outbox::flush(const SessionTable &sessions)
{
    const QList<Pending> pending = std::exchange(m_pending, {});
    for (const Pending &p : pending) {
        if (p.broadcast)
            sessions.broadcast(p.message, p.session);
        else
            sessions.send(p.session, p.callbackId, p.message);
    }
}

} // namespace quillon
