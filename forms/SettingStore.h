#pragma once

#include <QMap>
#include <QString>

// One place where the program keeps values. A page's field table reads and writes each store
// once per load or apply, with all of that store's keys together.
class SettingStore
{
public:
    using Values = QMap<QString, QString>;

    virtual ~SettingStore() = default;

    // The stored text of every key asked for, its default where nothing is stored.
    // May throw quillon::EngineError.
    [[nodiscard]] virtual Values Read(const Values &defaults) = 0;
    // Stores every given key. May throw quillon::EngineError.
    virtual void Write(const Values &values) = 0;
};
