#pragma once

#include "OperationArguments.h"
#include "PropertyBag.h"

namespace quillon {

class SettingsStore;

// The online synchronisation's account and frequency, kept as "ENGINE" settings of the section
// "OnlineSync" so the password goes to the keyring like every other one.
class SyncSettings
{
public:
    explicit SyncSettings(SettingsStore &store) : m_store(store) {}

    static inline const QString kConsumer = QStringLiteral("ENGINE");
    static inline const QString kSection = QStringLiteral("OnlineSync");

    // Remote flag, server, user, password and frequency in seconds, in that order.
    void write(const OperationArguments &args);
    // The same five as "SyncRemote", "SyncServer", "SyncUser", "SyncPassword", "SyncFrequency".
    [[nodiscard]] BagPtr read() const;

private:
    SettingsStore &m_store;
};

} // namespace quillon
