#include "SessionTable.h"

#include "EngineError.h"

#include <QList>

#include <algorithm>

namespace quillon {

SessionTable::SessionId SessionTable::open(MessageSink sink)
{
    m_sessions.insert(++m_last, Session{std::move(sink), {}, 0, false});
    return m_last;
}

QString SessionTable::close(SessionId session)
{
    const Session gone = m_sessions.take(session);
    return gone.connected ? gone.consumerId : QString();
}

void SessionTable::requireOpen(SessionId session) const
{
    if (!m_sessions.contains(session))
        throw EngineError(QStringLiteral("Engine session %1 is not open").arg(session));
}

void SessionTable::connect(SessionId session, const QString &consumerId, qint32 callbackId)
{
    requireOpen(session);
    Session &s = m_sessions[session];
    s.consumerId = consumerId;
    s.callbackId = callbackId;
    s.connected = true;
}

QString SessionTable::consumerOf(SessionId session) const
{
    const auto it = m_sessions.constFind(session);
    return it != m_sessions.cend() && it->connected ? it->consumerId : QString();
}

QStringList SessionTable::connectedConsumers() const
{
    QStringList consumers;
    for (const Session &s : m_sessions) {
        if (s.connected)
            consumers.append(s.consumerId);
    }
    return consumers;
}

bool SessionTable::anyConnected() const
{
    return std::any_of(m_sessions.cbegin(), m_sessions.cend(), [](const Session &s) { return s.connected; });
}

void SessionTable::send(SessionId session, qint32 callbackId, const BagPtr &message) const
{
    const auto it = m_sessions.constFind(session);
    if (callbackId != 0 && it != m_sessions.cend() && it->sink)
        it->sink(callbackId, message);
}

void SessionTable::broadcast(const BagPtr &message, SessionId except) const
{
    // Collected first: a sink is allowed to open or close sessions.
    QList<std::pair<MessageSink, qint32>> targets;
    for (auto it = m_sessions.cbegin(); it != m_sessions.cend(); ++it) {
        if (it->connected && it.key() != except && it->sink)
            targets.append({it->sink, it->callbackId});
    }
    for (const auto &[sink, callbackId] : targets)
        sink(callbackId, message);
}

} // namespace quillon
