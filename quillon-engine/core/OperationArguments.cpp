#include "OperationArguments.h"

#include "EngineError.h"

namespace quillon {

void OperationArguments::refuse(const QString &detail) const
{
    throw EngineError(QStringLiteral("bad arguments for %1: %2").arg(m_operation, detail));
}

void OperationArguments::expectCount(int count) const
{
    if (m_values.size() != count)
        refuse(QStringLiteral("expected %1, got %2").arg(count).arg(m_values.size()));
}

const PropertyValue &OperationArguments::at(int index) const
{
    if (index < 0 || index >= m_values.size())
        refuse(QStringLiteral("argument %1 is missing").arg(index + 1));
    return m_values.at(index);
}

QString OperationArguments::text(int index) const
{
    if (const auto *s = std::get_if<QString>(&at(index)))
        return *s;
    refuse(QStringLiteral("argument %1 must be text").arg(index + 1));
}

qint32 OperationArguments::number(int index) const
{
    if (const auto *n = std::get_if<qint32>(&at(index)))
        return *n;
    refuse(QStringLiteral("argument %1 must be an integer").arg(index + 1));
}

BagPtr OperationArguments::bag(int index) const
{
    const auto *b = std::get_if<BagPtr>(&at(index));
    if (!b || !*b)
        refuse(QStringLiteral("argument %1 must be a bag").arg(index + 1));
    return *b;
}

ListPtr OperationArguments::list(int index) const
{
    const auto *l = std::get_if<ListPtr>(&at(index));
    if (!l || !*l)
        refuse(QStringLiteral("argument %1 must be a list").arg(index + 1));
    return *l;
}

} // namespace quillon
