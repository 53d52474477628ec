#include "SettingsStore.h"

#include "EngineDatabase.h"
#include "SecretVault.h"

namespace quillon {

std::optional<QString> SettingsStore::value(const QString &consumerId, const QString &section,
                                            const QString &key)
{
    const auto rows = m_db.select(
        QStringLiteral("SELECT value FROM settings WHERE consumer_id = ? AND section = ? AND key = ?"),
        {consumerId, section, key}, "reading a setting");
    if (rows.isEmpty())
        return std::nullopt;
    const QString stored = rows.first().value(0).toString();
    return m_vault ? m_vault->reveal(stored, SecretVault::settingName(consumerId, section, key)) : stored;
}

void SettingsStore::setValue(const QString &consumerId, const QString &section, const QString &key,
                             const QString &value)
{
    m_db.execute(
        QStringLiteral("INSERT INTO settings (consumer_id, section, key, value) VALUES (?, ?, ?, ?)"
                       " ON CONFLICT (consumer_id, section, key) DO UPDATE SET value = excluded.value"),
        {consumerId, section, key, value}, "storing a setting");
}

void SettingsStore::removeValue(const QString &consumerId, const QString &section, const QString &key)
{
    m_db.execute(QStringLiteral("DELETE FROM settings WHERE consumer_id = ? AND section = ? AND key = ?"),
                 {consumerId, section, key}, "removing a setting");
}

void SettingsStore::removeSection(const QString &section)
{
    m_db.execute(QStringLiteral("DELETE FROM settings WHERE section = ?"), {section},
                 "removing a settings section");
}

} // namespace quillon
