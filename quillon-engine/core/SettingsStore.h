#pragma once

#include <QString>

#include <optional>

namespace quillon {

class EngineDatabase;
class SecretVault;

// Text settings addressed by consumer ID, section and key; names match without regard to case,
// as registry names do.
class SettingsStore
{
public:
    explicit SettingsStore(EngineDatabase &db) : m_db(db) {}
    // Where passwords moved out of the database are read back.
    void setVault(const SecretVault *vault) { m_vault = vault; }

    [[nodiscard]] std::optional<QString> value(const QString &consumerId, const QString &section,
                                               const QString &key);
    void setValue(const QString &consumerId, const QString &section, const QString &key,
                  const QString &value);
    void removeValue(const QString &consumerId, const QString &section, const QString &key);
    // The section of every consumer.
    void removeSection(const QString &section);

private:
    EngineDatabase &m_db;
    const SecretVault *m_vault = nullptr;
};

} // namespace quillon
