#pragma once

#include <QString>

namespace EngineNames {

// The class word that addresses subscriptions in every engine call.
inline const QString kNewsClass = QStringLiteral("NEWS");
// The consumer IDs: this program, and the delivery into the mail program.
inline const QString kConfigConsumer = QStringLiteral("CONFIGCONSUMER");
inline const QString kOutlookConsumer = QStringLiteral("OLCONSUMER");

} // namespace EngineNames
