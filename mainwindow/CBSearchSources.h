#pragma once

#include "CBBase.h"
#include "HandlerNames.h"

// The answer to a request for the engine's search sources.
class CBSearchSources final : public CBBase
{
protected:
    const char *HandlerName() const override { return HandlerNames::EventSearchSourcesCallback; }
};
