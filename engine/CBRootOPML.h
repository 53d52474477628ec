#pragma once

#include "CBBase.h"

// The answer to a request for the directory's root list.
class CBRootOPML final : public CBBase
{
protected:
    const char *HandlerName() const override { return "EventRootOPMLCallback"; }
};
