#pragma once

#include "PropertyBag.h"

#include <QList>

namespace quillon {

class SessionTable;

// Messages an operation wants to send, held until its changes are committed: a failed
// operation must not announce what did not happen.
class Outbox
{
public:
    using SessionId = qint32;

    void toCallback(SessionId session, qint32 callbackId, BagPtr message);
    void toConnected(BagPtr message, SessionId except = 0);

    void flush(const SessionTable &sessions);
    void discard() { m_pending.clear(); }

private:
    struct Pending
    {
        BagPtr message;
        SessionId session = 0;
        qint32 callbackId = 0;
        bool broadcast = false;
    };
    QList<Pending> m_pending;
};

} // namespace quillon
