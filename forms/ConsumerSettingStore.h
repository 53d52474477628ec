#pragma once

#include "SettingStore.h"

// Settings the engine keeps for one consumer ID and module section ("ENGINE", "OLCONSUMER",
// ...), through the process's engine client. Integer stores hand defaults and values to the
// engine as numbers, as the engine's own defaults ("UPDATEFREQ" and the like) are kept.
class ConsumerSettingStore : public SettingStore
{
public:
    enum class Kind { Text, Integer };

    ConsumerSettingStore(QString consumerId, QString section, Kind kind = Kind::Text);

    [[nodiscard]] Values Read(const Values &defaults) override;
    void Write(const Values &values) override;

private:
    QString m_consumerId;
    QString m_section;
    Kind m_kind;
};
