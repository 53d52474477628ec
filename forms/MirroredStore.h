#pragma once

#include "SettingStore.h"

// Values kept in one store and copied to another on every write, for a reader that only
// sees the second (the engine follows the network page's values this way).
class MirroredStore : public SettingStore
{
public:
    MirroredStore(SettingStore &primary, SettingStore &mirror) : m_primary(primary), m_mirror(mirror) {}

    [[nodiscard]] Values Read(const Values &defaults) override { return m_primary.Read(defaults); }
    void Write(const Values &values) override
    {
        m_primary.Write(values);
        m_mirror.Write(values);
    }

private:
    SettingStore &m_primary;
    SettingStore &m_mirror;
};
