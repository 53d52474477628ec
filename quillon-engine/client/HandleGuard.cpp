#include "HandleGuard.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcHandleGuard, "corvell.quillon.client.handles")

HandleGuard::HandleGuard(quillon::SubscribeClient &client, quillon::Handle handle)
    : m_client(&client), m_handle(handle)
{
}

HandleGuard::HandleGuard(HandleGuard &&other) noexcept : m_client(other.m_client), m_handle(other.m_handle)
{
    other.m_handle = 0;
}

HandleGuard::~HandleGuard()
{
    reset();
}

void HandleGuard::reset(quillon::Handle handle)
{
    const quillon::Handle old = m_handle;
    m_handle = handle;
    if (old <= 0)
        return;
    // Runs during unwinding too: a failing release must not throw out of here.
    try {
        m_client->ReleaseHandle(old);
    } catch (const quillon::EngineError &error) {
        qCWarning(lcHandleGuard) << "release of handle" << old << "failed:" << error.message();
    }
}

quillon::Handle HandleGuard::take()
{
    const quillon::Handle handle = m_handle;
    m_handle = 0;
    return handle;
}
