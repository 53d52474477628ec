#include "PropertyBag.h"

namespace quillon {

QString valueText(const PropertyValue &value)
{
    if (const auto *s = std::get_if<QString>(&value))
        return *s;
    if (const auto *n = std::get_if<qint32>(&value))
        return QString::number(*n);
    if (std::holds_alternative<std::monostate>(value))
        return kMissingText;
    return QString();
}

qint32 valueLong(const PropertyValue &value)
{
    if (const auto *n = std::get_if<qint32>(&value))
        return *n;
    if (const auto *s = std::get_if<QString>(&value)) {
        bool ok = false;
        const qint32 n = s->trimmed().toInt(&ok);
        return ok ? n : 0;
    }
    if (std::holds_alternative<std::monostate>(value))
        return kMissing;
    return 0;
}

PropertyValue deepCopy(const PropertyValue &value)
{
    if (const auto *b = std::get_if<BagPtr>(&value))
        return *b ? PropertyValue((*b)->clone()) : PropertyValue();
    if (const auto *l = std::get_if<ListPtr>(&value))
        return *l ? PropertyValue((*l)->clone()) : PropertyValue();
    return value;
}

namespace {
constexpr qsizetype kScanUpTo = 16;
} // namespace

qsizetype PropertyBag::indexOf(const QString &name) const
{
    if (m_entries.size() <= kScanUpTo) {
        for (qsizetype i = 0; i < m_entries.size(); ++i) {
            if (m_entries[i].first.compare(name, Qt::CaseInsensitive) == 0)
                return i;
        }
        return -1;
    }
    if (m_index.size() != m_entries.size()) {
        m_index.clear();
        m_index.reserve(m_entries.size());
        for (qsizetype i = 0; i < m_entries.size(); ++i)
            m_index.insert(m_entries[i].first.toCaseFolded(), i);
    }
    return m_index.value(name.toCaseFolded(), -1);
}

void PropertyBag::set(const QString &name, PropertyValue value)
{
    if (const qsizetype i = indexOf(name); i >= 0) {
        m_entries[i].second = std::move(value);
        return;
    }
    m_entries.append({name, std::move(value)});
    if (!m_index.isEmpty())
        m_index.insert(name.toCaseFolded(), m_entries.size() - 1);
}

bool PropertyBag::remove(const QString &name)
{
    const qsizetype i = indexOf(name);
    if (i < 0)
        return false;
    m_entries.removeAt(i);
    m_index.clear();
    return true;
}

const PropertyValue *PropertyBag::find(const QString &name) const
{
    const qsizetype i = indexOf(name);
    return i >= 0 ? &m_entries[i].second : nullptr;
}

QString PropertyBag::text(const QString &name) const
{
    const PropertyValue *v = find(name);
    return v ? valueText(*v) : kMissingText;
}

qint32 PropertyBag::number(const QString &name) const
{
    const PropertyValue *v = find(name);
    return v ? valueLong(*v) : kMissing;
}

BagPtr PropertyBag::bag(const QString &name) const
{
    const PropertyValue *v = find(name);
    if (const auto *b = v ? std::get_if<BagPtr>(v) : nullptr)
        return *b;
    return nullptr;
}

ListPtr PropertyBag::list(const QString &name) const
{
    const PropertyValue *v = find(name);
    if (const auto *l = v ? std::get_if<ListPtr>(v) : nullptr)
        return *l;
    return nullptr;
}

QStringList PropertyBag::names() const
{
    QStringList result;
    result.reserve(m_entries.size());
    for (const auto &entry : m_entries)
        result.append(entry.first);
    return result;
}

BagPtr PropertyBag::clone() const
{
    auto copy = create();
    copy->m_entries.reserve(m_entries.size());
    for (const auto &entry : m_entries)
        copy->m_entries.append({entry.first, deepCopy(entry.second)});
    return copy;
}

ListPtr PropertyList::clone() const
{
    auto copy = create();
    copy->m_items.reserve(m_items.size());
    for (const auto &item : m_items)
        copy->m_items.append(deepCopy(item));
    return copy;
}

bool sameValue(const PropertyValue &a, const PropertyValue &b)
{
    if (a.index() != b.index())
        return false;
    if (const auto *ba = std::get_if<BagPtr>(&a)) {
        const auto &bb = std::get<BagPtr>(b);
        return (!*ba && !bb) || (*ba && bb && **ba == *bb);
    }
    if (const auto *la = std::get_if<ListPtr>(&a)) {
        const auto &lb = std::get<ListPtr>(b);
        return (!*la && !lb) || (*la && lb && **la == *lb);
    }
    return a == b;
}

bool operator==(const PropertyBag &a, const PropertyBag &b)
{
    if (a.size() != b.size())
        return false;
    for (const auto &entry : a.entries()) {
        const PropertyValue *other = b.find(entry.first);
        if (!other || !sameValue(entry.second, *other))
            return false;
    }
    return true;
}

bool operator==(const PropertyList &a, const PropertyList &b)
{
    if (a.size() != b.size())
        return false;
    for (int i = 0; i < a.size(); ++i) {
        if (!sameValue(a.at(i), b.at(i)))
            return false;
    }
    return true;
}

} // namespace quillon
