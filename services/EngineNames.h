#pragma once

#include <QString>

namespace EngineNames {

// The class word that addresses subscriptions in every engine call.
inline const QString kNewsClass = QStringLiteral("NEWS");

} // namespace EngineNames
