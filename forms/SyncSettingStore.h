#pragma once

#include "SettingStore.h"

// The engine's synchronisation settings: "SyncRemote", "SyncServer", "SyncUser",
// "SyncPassword" and "SyncFrequency", read together and written together.
class SyncSettingStore : public SettingStore
{
public:
    [[nodiscard]] Values Read(const Values &defaults) override;
    // Keys not given are written as they are stored now.
    void Write(const Values &values) override;
};
