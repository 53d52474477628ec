#include "CBUpdateSub.h"

void CBUpdateSub::DeliverResult(quillon::Handle bag)
{
    Forward(HandlerName(), bag);
    Shutdown();
}
