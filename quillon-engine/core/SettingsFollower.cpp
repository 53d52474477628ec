#include "SettingsFollower.h"

#include "CoreLogging.h"
#include "EngineDefaults.h"
#include "EngineLog.h"
#include "FetchPolicy.h"
#include "GeneralSettingKeys.h"
#include "NetworkSettingKeys.h"
#include "SettingsStore.h"
#include "SubscriptionStore.h"

#include <algorithm>

namespace quillon {

namespace {
namespace G = GeneralSettingKeys;

bool same(const QString &a, const QString &b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

bool names(const QStringList &keys, const QString &key)
{
    return keys.contains(key, Qt::CaseInsensitive);
}
} // namespace

SettingsFollower::SettingsFollower(SettingsStore &settings, EngineDefaults &defaults,
                                   SubscriptionStore &subscriptions, EngineLog &log, FetchPolicy &policy)
    : m_settings(settings), m_defaults(defaults), m_subscriptions(subscriptions), m_log(log), m_policy(policy)
{
}

void SettingsFollower::readAll()
{
    readNetwork();
    readLoad();
    readLog();
    m_settings.setValue(G::kConsumer, G::kSection, G::kLogFilePath, m_log.filePath());
}

void SettingsFollower::written(const QString &consumerId, const QString &section, const QStringList &keys)
{
    if (!same(consumerId, G::kConsumer))
        return;
    if (same(section, NetworkSettingKeys::kSection)) {
        readNetwork();
        return;
    }
    if (!section.isEmpty())
        return;
    if (names(keys, G::kEngineLoad))
        readLoad();
    if (names(keys, G::kLogToDisk) || names(keys, G::kLogLevel))
        readLog();
    if (names(keys, QStringLiteral("UPDATEFREQ")))
        moveDefaultSchedule();
}

void SettingsFollower::readNetwork()
{
    const QString &consumer = NetworkSettingKeys::kConsumer;
    const QString &section = NetworkSettingKeys::kSection;
    m_policy.setNetwork(NetworkSettings::read([this, &consumer, &section](const QString &key) {
        return m_settings.value(consumer, section, key);
    }));
}

void SettingsFollower::readLoad()
{
    const int load =
        engineNumber(G::kEngineLoad, G::kEngineLoadDefault, G::kEngineLoadMin, G::kEngineLoadMax);
    m_policy.setMaxConcurrent(1 << load);
}

void SettingsFollower::readLog()
{
    const QString toDisk =
        m_settings.value(G::kConsumer, G::kSection, G::kLogToDisk).value_or(QString()).trimmed();
    // "1" as the page writes it; "True" as older writers did; nothing stored keeps the file.
    const int level = engineNumber(G::kLogLevel, G::kLogLevelDefault, G::kLogLevelMin, G::kLogLevelMax);
    static const QStringList yes = {QStringLiteral("1"),    QStringLiteral("True"), QStringLiteral("true"),
                                    QStringLiteral("TRUE"), QStringLiteral("YES"),  QStringLiteral("yes")};
    m_log.setFile(toDisk.isEmpty() || yes.contains(toDisk), G::lowestLineLevel(level));
}

void SettingsFollower::moveDefaultSchedule()
{
    m_defaults.forget();
    const int moved = m_subscriptions.rescheduleOnDefault(m_defaults.updateFrequency(-1));
    qCDebug(lcCore) << moved << "subscriptions on the default frequency rescheduled";
}

int SettingsFollower::engineNumber(const QString &key, int fallback, int lowest, int highest)
{
    bool ok = false;
    const int value =
        m_settings.value(G::kConsumer, G::kSection, key).value_or(QString()).trimmed().toInt(&ok);
    return ok ? std::clamp(value, lowest, highest) : fallback;
}

} // namespace quillon
