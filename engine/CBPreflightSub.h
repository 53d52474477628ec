#pragma once

#include "CBBase.h"
#include "HandlerNames.h"

// The answer to a preflight check of a feed address.
class CBPreflightSub final : public CBBase
{
protected:
    const char *HandlerName() const override { return HandlerNames::EventPreviewCallback; }
};
