#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// What one field shows over several subscriptions: their value when all agree, else the
// mixed marker, which leaves the field without a choice and unchanged on apply.
namespace CommonValues {

inline constexpr qint32 kNothingCommon = -237237237;
inline const QString kNothingCommonText = QStringLiteral("NothingCommon");

// The shared value, kNothingCommon when two differ, the missing marker for an empty list.
[[nodiscard]] qint32 Common(const QList<qint32> &values);
[[nodiscard]] QString Common(const QStringList &values);

} // namespace CommonValues
