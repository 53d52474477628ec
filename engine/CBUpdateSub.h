#pragma once

#include "CBBase.h"
#include "HandlerNames.h"

// The answer to a request that changes a subscription, for the main window.
class CBUpdateSub final : public CBBase
{
public:
    // Delivers an answer the program made itself: the same forwarding and Shutdown, without
    // the keep-alive step of ProcessMessage.
    void DeliverResult(quillon::Handle bag);

protected:
    const char *HandlerName() const override { return HandlerNames::HandleSubscribeClientCallback; }
};
