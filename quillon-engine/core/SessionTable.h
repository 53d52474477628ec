#pragma once

#include "PropertyBag.h"

#include <QMap>
#include <QString>
#include <QStringList>

#include <functional>

namespace quillon {

// The client sessions of one core and the consumer each has connected as.
class SessionTable
{
public:
    using SessionId = qint32;
    using MessageSink = std::function<void(qint32 callbackId, const BagPtr &message)>;

    SessionId open(MessageSink sink);
    // Returns the consumer the session was connected as, or an empty text.
    QString close(SessionId session);
    // Throws EngineError for a session that is not open.
    void requireOpen(SessionId session) const;

    // Connecting again replaces the consumer ID and the connection callback.
    void connect(SessionId session, const QString &consumerId, qint32 callbackId);
    // Empty when the session has not connected.
    [[nodiscard]] QString consumerOf(SessionId session) const;
    [[nodiscard]] QStringList connectedConsumers() const;
    [[nodiscard]] bool anyConnected() const;

    // To one callback of a session; ignored for callback 0 or a closed session.
    void send(SessionId session, qint32 callbackId, const BagPtr &message) const;
    // To the connection callback of every connected session but one.
    void broadcast(const BagPtr &message, SessionId except = 0) const;

private:
    struct Session
    {
        MessageSink sink;
        QString consumerId;
        qint32 callbackId = 0;
        bool connected = false;
    };

    QMap<SessionId, Session> m_sessions;
    SessionId m_last = 0;
};

} // namespace quillon
