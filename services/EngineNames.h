#pragma once

#include "ItemClass.h"

#include <QString>

namespace EngineNames {

// The class word that addresses subscriptions in every engine call.
inline const QString &kNewsClass = quillon::kNewsClass;
// The consumer IDs: this program, and the delivery into the mail program.
inline const QString kConfigConsumer = QStringLiteral("CONFIGCONSUMER");
inline const QString kOutlookConsumer = QStringLiteral("OLCONSUMER");
// The mail delivery's own defaults, under kOutlookConsumer.
inline const QString kOutlookDefaults = QStringLiteral("OutlookDefaults");

} // namespace EngineNames
