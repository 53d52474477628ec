#pragma once

#include "CBBase.h"
#include "HandlerNames.h"

// Unsolicited engine messages for the main window, for the life of the connection.
class CBConnect final : public CBBase
{
protected:
    const char *HandlerName() const override { return HandlerNames::EventSubscribeClientMessage; }
    bool ShutsDownAfterAnswer() const override { return false; }
};
