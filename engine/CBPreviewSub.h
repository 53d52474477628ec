#pragma once

#include "CBBase.h"
#include "HandlerNames.h"

// The answer to a feed preview request.
class CBPreviewSub final : public CBBase
{
protected:
    const char *HandlerName() const override { return HandlerNames::EventPreviewCallback; }
};
