#include "NewStoreRequest.h"

#include "EngineNames.h"
#include "HandleGuard.h"

QString NewStoreRequest::ModeCode(Mode mode)
{
    return mode == Mode::CreateAndMove ? QStringLiteral("1") : QStringLiteral("0");
}

void NewStoreRequest::Write(quillon::SubscribeClient &client) const
{
    // One bag, so the delivery never sees a name without its folder and mode.
    HandleGuard bag(client, client.NewBag());
    client.SetStringValue(bag.get(), QStringLiteral("MakeNewPST_DisplayName"), displayName);
    client.SetStringValue(bag.get(), QStringLiteral("MakeNewPST_path"), folder);
    client.SetStringValue(bag.get(), QStringLiteral("MakeNewPST_mode"), ModeCode(mode));
    client.SetStringValue(bag.get(), QStringLiteral("MakeNewPST_fileName"), fileName);
    client.SetSettings(EngineNames::kOutlookConsumer, EngineNames::kOutlookDefaults, bag.get());
}
