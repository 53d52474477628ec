#include "CommonValues.h"

#include "PropertyBag.h"

namespace {
template <typename List, typename Value>
Value CommonOf(const List &values, const Value &missing, const Value &mixed)
{
    if (values.isEmpty())
        return missing;
    for (const auto &value : values) {
        if (value != values.first())
            return mixed;
    }
    return values.first();
}
} // namespace

namespace CommonValues {

qint32 Common(const QList<qint32> &values)
{
    return CommonOf(values, quillon::kMissing, kNothingCommon);
}

QString Common(const QStringList &values)
{
    return CommonOf(values, quillon::kMissingText, kNothingCommonText);
}

} // namespace CommonValues
