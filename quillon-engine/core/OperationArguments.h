#pragma once

#include "PropertyBag.h"

#include <QList>
#include <QString>

namespace quillon {

// Typed access to the value arguments of one engine operation. Anything of the wrong kind is
// refused with "bad arguments for <operation>" instead of being read as a default.
class OperationArguments
{
public:
    OperationArguments(const QString &operation, const QList<PropertyValue> &values)
        : m_operation(operation), m_values(values)
    {
    }

    void expectCount(int count) const;
    [[nodiscard]] QString text(int index) const;
    [[nodiscard]] qint32 number(int index) const;
    [[nodiscard]] BagPtr bag(int index) const;
    [[nodiscard]] ListPtr list(int index) const;
    [[nodiscard]] const QString &operation() const { return m_operation; }

private:
    [[noreturn]] void refuse(const QString &detail) const;
    [[nodiscard]] const PropertyValue &at(int index) const;

    const QString &m_operation;
    const QList<PropertyValue> &m_values;
};

} // namespace quillon
