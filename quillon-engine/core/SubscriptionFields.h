#pragma once

#include "PropertyBag.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <QVariant>

namespace quillon {

// The subscription properties the engine keeps in columns of its own, and how a bag value
// becomes a column value and back. Names not listed here are kept as free properties.
class SubscriptionFields
{
public:
    enum class Kind { Text, Integer, Date };
    struct Field
    {
        QString name;
        QString column;
        Kind kind;
    };

    // In the order GetItemBag returns them.
    [[nodiscard]] static const QList<Field> &all();
    [[nodiscard]] static const Field *find(const QString &name);
    // Names the engine computes; a consumer cannot set them.
    [[nodiscard]] static bool isReadOnly(const QString &name);

    // A null variant clears the column. Throws EngineError for a value of the wrong kind.
    [[nodiscard]] static QVariant toColumn(const Field &field, const PropertyValue &value);
    // Free properties keep text as text and numbers as numbers.
    [[nodiscard]] static QVariant toFreeValue(const QString &name, const PropertyValue &value);
    // A null column reads as nothing (absent from the bag).
    [[nodiscard]] static PropertyValue fromColumn(const QVariant &value);

    [[nodiscard]] static QString isoDate(const QDateTime &time);
};

} // namespace quillon
