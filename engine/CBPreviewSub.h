#pragma once

#include "CBBase.h"

// The answer to a feed preview request.
class CBPreviewSub final : public CBBase
{
protected:
    const char *HandlerName() const override { return "EventPreviewCallback"; }
};
