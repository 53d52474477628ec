#pragma once

#include "SubscribeClient.h"

// Releases one engine handle when it goes out of scope, so a throwing engine call cannot
// leak the bags and lists obtained before it.
class HandleGuard
{
public:
    explicit HandleGuard(quillon::SubscribeClient &client, quillon::Handle handle = 0);
    ~HandleGuard();

    HandleGuard(const HandleGuard &) = delete;
    HandleGuard &operator=(const HandleGuard &) = delete;
    HandleGuard(HandleGuard &&other) noexcept;
    HandleGuard &operator=(HandleGuard &&) = delete;

    [[nodiscard]] quillon::Handle get() const { return m_handle; }
    [[nodiscard]] bool isValid() const { return m_handle > 0; }
    // Releases the current handle (if any) and guards another.
    void reset(quillon::Handle handle = 0);
    // Gives up ownership without releasing.
    [[nodiscard]] quillon::Handle take();

private:
    quillon::SubscribeClient *m_client;
    quillon::Handle m_handle;
};
