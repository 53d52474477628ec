#pragma once

#include "EngineCalls.h"
#include "PropertyBag.h"
#include "SideConnection.h"
#include "SubscribeClient.h"

#include <QTest>

// The client calls and store reads the engine core's tests make, each releasing what it got.
namespace EngineCoreCalls {

using namespace quillon;
using namespace EngineCalls;

using SideConnection = ::SideConnection;

// Adds a subscription titled after its address, bound to the consumers named.
inline qint32 add(SubscribeClient &c, const QString &url, const QStringList &consumerIds = {})
{
    return EngineCalls::AddSubscription(c, "Title of " + url, url, {}, consumerIds);
}

} // namespace EngineCoreCalls
