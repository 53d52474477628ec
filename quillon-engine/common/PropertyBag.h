#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <memory>
#include <variant>

namespace quillon {

// The "no value" marker of the whole protocol.
inline constexpr qint32 kMissing = -237237;
inline const QString kMissingText = QStringLiteral("-237237");
// A text as a reader shows it: empty where the engine answered "no value".
inline QString presentText(const QString &value)
{
    return value == kMissingText ? QString() : value;
}

class PropertyBag;
class PropertyList;
using BagPtr = std::shared_ptr<PropertyBag>;
using ListPtr = std::shared_ptr<PropertyList>;

// A value in a bag or a list: nothing, text, a 32-bit integer, a nested bag or a list.
using PropertyValue = std::variant<std::monostate, QString, qint32, BagPtr, ListPtr>;

// Reading rules shared by the client and the engine: an absent value reads as the marker.
QString valueText(const PropertyValue &value);
qint32 valueLong(const PropertyValue &value);
PropertyValue deepCopy(const PropertyValue &value);

// Named values in insertion order. Names compare without regard to case, as property names
// written by different consumers ("LastDateCheck", "LASTDATECHECK") must meet.
class PropertyBag
{
public:
    static BagPtr create() { return std::make_shared<PropertyBag>(); }

    void set(const QString &name, PropertyValue value);
    void setText(const QString &name, const QString &value) { set(name, value); }
    void setLong(const QString &name, qint32 value) { set(name, value); }
    bool remove(const QString &name);
    [[nodiscard]] const PropertyValue *find(const QString &name) const;
    [[nodiscard]] bool contains(const QString &name) const { return find(name) != nullptr; }

    [[nodiscard]] QString text(const QString &name) const;
    [[nodiscard]] qint32 number(const QString &name) const;
    [[nodiscard]] BagPtr bag(const QString &name) const;
    [[nodiscard]] ListPtr list(const QString &name) const;

    [[nodiscard]] QStringList names() const;
    [[nodiscard]] int size() const { return int(m_entries.size()); }
    [[nodiscard]] const QList<std::pair<QString, PropertyValue>> &entries() const { return m_entries; }
    [[nodiscard]] BagPtr clone() const;

private:
    [[nodiscard]] qsizetype indexOf(const QString &name) const;

    QList<std::pair<QString, PropertyValue>> m_entries;
    // Case-folded name to position, made once a bag is large enough for a scan to cost more:
    // a client's bag of many names must not make decoding quadratic.
    mutable QHash<QString, qsizetype> m_index;
};

// An ordered list of values, indexed from 0.
class PropertyList
{
public:
    static ListPtr create() { return std::make_shared<PropertyList>(); }

    void append(PropertyValue value) { m_items.append(std::move(value)); }
    [[nodiscard]] int size() const { return int(m_items.size()); }
    [[nodiscard]] const PropertyValue &at(int index) const { return m_items.at(index); }
    [[nodiscard]] const QList<PropertyValue> &items() const { return m_items; }
    [[nodiscard]] ListPtr clone() const;

private:
    QList<PropertyValue> m_items;
};

bool operator==(const PropertyBag &a, const PropertyBag &b);
bool operator==(const PropertyList &a, const PropertyList &b);
bool sameValue(const PropertyValue &a, const PropertyValue &b);

} // namespace quillon
