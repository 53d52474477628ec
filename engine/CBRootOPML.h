#pragma once

#include "CBBase.h"
#include "HandlerNames.h"

// The answer to a request for the directory's root list.
class CBRootOPML final : public CBBase
{
protected:
    const char *HandlerName() const override { return HandlerNames::EventRootOPMLCallback; }
};
