#pragma once

#include "SettingStore.h"

// Values kept in the program's own per-user store under one section ("NetworkModule"),
// passed through engine bags as the bag-to-settings procedures of ClientAccess do.
class LocalBagStore : public SettingStore
{
public:
    explicit LocalBagStore(QString section);

    [[nodiscard]] Values Read(const Values &defaults) override;
    void Write(const Values &values) override;

private:
    QString m_section;
};
