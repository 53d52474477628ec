#pragma once

#include "CBBase.h"

// The answer to a request for the engine's search sources.
class CBSearchSources final : public CBBase
{
protected:
    const char *HandlerName() const override { return "EventSearchSourcesCallback"; }
};
