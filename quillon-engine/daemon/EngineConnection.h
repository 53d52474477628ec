#pragma once

#include "EngineCore.h"
#include "FrameReader.h"

#include <QCborMap>
#include <QObject>
#include <QPointer>

class QLocalSocket;

namespace quillon {

// One client's connection to the daemon: its own engine session, requests answered in order,
// engine messages for the session written as they come. It deletes itself when the client goes.
// A client costs the engine bounded memory: requests of at most kMaxRequestBytes and
// kMaxRequestValues, and at most kMaxQueuedBytes of output it has not taken; past that it is
// dropped.
class EngineConnection : public QObject
{
    Q_OBJECT
public:
    static constexpr qsizetype kMaxRequestBytes = 8 * 1024 * 1024;
    static constexpr qsizetype kMaxRequestValues = 250'000;
    static constexpr qint64 kMaxQueuedBytes = 16 * 1024 * 1024;

    EngineConnection(QLocalSocket *socket, EngineCore *core, QObject *parent = nullptr);
    ~EngineConnection() override;

    // Writes out what is pending (waiting at most timeoutMs) and closes the connection.
    void finish(int timeoutMs);

private:
    void readRequests();
    void answer(const QCborMap &frame);
    void sendMessage(qint32 callbackId, const BagPtr &message);
    enum class Flush { Now, NextTurn };
    void send(const QByteArray &bytes, Flush when = Flush::Now);
    void closeSession();
    void drop(const char *reason);

    QLocalSocket *m_socket;
    QPointer<EngineCore> m_core;
    EngineCore::SessionId m_session = 0;
    FrameReader m_reader{kMaxRequestBytes};
    bool m_dropping = false;
};

} // namespace quillon
