#pragma once

#include <QHash>
#include <QString>

// A collection of integers under text keys matched without regard to case, as the subscription
// list stores "SubID_<id>" and looks up "SubId_<id>".
class KeyedCollection
{
public:
    void Add(const QString &key, qint32 value) { m_items.insert(key.toCaseFolded(), value); }
    // -237237 when the key is absent.
    [[nodiscard]] qint32 Item(const QString &key) const;
    void Reserve(qsizetype size) { m_items.reserve(size); }

private:
    QHash<QString, qint32> m_items;
};
