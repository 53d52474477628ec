#pragma once

#include "CBBase.h"
#include "HandlerNames.h"

// The answer to a request for a subscription's articles.
class CBGetSubItems final : public CBBase
{
protected:
    const char *HandlerName() const override { return HandlerNames::EventSubscriptionItemsCallback; }
};
