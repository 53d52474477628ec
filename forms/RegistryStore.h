#pragma once

#include "SettingStore.h"

// Values in the vendor branch (CRegistry) under one product word and section.
class RegistryStore : public SettingStore
{
public:
    RegistryStore(QString product, QString section);

    [[nodiscard]] Values Read(const Values &defaults) override;
    void Write(const Values &values) override;

private:
    QString m_product;
    QString m_section;
};
