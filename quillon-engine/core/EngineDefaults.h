#pragma once

#include <QHash>
#include <QString>

namespace quillon {

class SettingsStore;

// The engine's own settings (consumer "ENGINE", section "") that stand in for a
// subscription's -1, and the values that hold when they are not set either.
class EngineDefaults
{
public:
    static constexpr qint32 kUpdateFrequency = 3600;
    static constexpr qint32 kDeleteRead = 259200;
    static constexpr qint32 kDeleteUnread = 1296000;
    // No feed is fetched more often than this, whatever its setting says.
    static constexpr qint32 kMinimumFrequency = 60;
    static inline const QString kBrowseUrl = QStringLiteral("quillon-data:directory/root.opml");

    explicit EngineDefaults(SettingsStore &settings) : m_settings(settings) {}

    // Seconds between fetches for a stored UPDATEFREQ (-1, 0 or unset: the engine's).
    [[nodiscard]] qint32 updateFrequency(qint32 stored);
    // Age in seconds for a stored DELETEREAD / DELETEUNREAD; 0 means never.
    [[nodiscard]] qint32 deleteReadAge(qint32 stored);
    [[nodiscard]] qint32 deleteUnreadAge(qint32 stored);

    // Writes the defaults consumers read from the engine ("OEM_Browse_URL") when absent.
    void seed();
    // The engine's settings may have changed: read them again when next asked.
    void forget() { m_cache.clear(); }

private:
    [[nodiscard]] qint32 setting(const QString &key, qint32 fallback);

    SettingsStore &m_settings;
    QHash<QString, qint32> m_cache; // every update asks; settings change rarely
};

} // namespace quillon
