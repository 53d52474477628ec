#include "EngineDefaults.h"

#include "SettingsStore.h"

#include <algorithm>

namespace quillon {

namespace {
const QString kEngine = QStringLiteral("ENGINE");
} // namespace

qint32 EngineDefaults::setting(const QString &key, qint32 fallback)
{
    const auto cached = m_cache.constFind(key);
    if (cached != m_cache.cend())
        return *cached;
    bool ok = false;
    const qint32 value = m_settings.value(kEngine, QString(), key).value_or(QString()).trimmed().toInt(&ok);
    return *m_cache.insert(key, ok && value >= 0 ? value : fallback);
}

qint32 EngineDefaults::updateFrequency(qint32 stored)
{
    qint32 seconds = stored;
    if (seconds <= 0)
        seconds = setting(QStringLiteral("UPDATEFREQ"), kUpdateFrequency);
    if (seconds <= 0)
        seconds = kUpdateFrequency;
    return std::max(seconds, kMinimumFrequency);
}

qint32 EngineDefaults::deleteReadAge(qint32 stored)
{
    return stored >= 0 ? stored : setting(QStringLiteral("DELETEREAD"), kDeleteRead);
}

qint32 EngineDefaults::deleteUnreadAge(qint32 stored)
{
    return stored >= 0 ? stored : setting(QStringLiteral("DELETEUNREAD"), kDeleteUnread);
}

void EngineDefaults::seed()
{
    const QString browse = QStringLiteral("OEM_Browse_URL");
    if (!m_settings.value(kEngine, QString(), browse))
        m_settings.setValue(kEngine, QString(), browse, kBrowseUrl);
}

} // namespace quillon
