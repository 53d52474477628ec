#include "RegistryStore.h"

#include "RegistrySettings.h"

RegistryStore::RegistryStore(QString product, QString section)
    : m_product(std::move(product)), m_section(std::move(section))
{
}

SettingStore::Values RegistryStore::Read(const Values &defaults)
{
    Values values = defaults;
    for (auto it = values.begin(); it != values.end(); ++it)
        it.value() = GetRegistrySetting(m_product, m_section, it.key(), it.value());
    return values;
}

void RegistryStore::Write(const Values &values)
{
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        PutRegistrySetting(m_product, m_section, it.key(), it.value());
}
