#pragma once

#include <QStringList>

namespace quillon {

class EngineDefaults;
class EngineLog;
class FetchPolicy;
class SettingsStore;
class SubscriptionStore;

// Makes the engine follow the settings consumers write, from the next request on: the network
// page's proxy and login, the general page's load and log file, and the default update
// frequency, which moves the subscriptions that use it.
class SettingsFollower
{
public:
    SettingsFollower(SettingsStore &settings, EngineDefaults &defaults, SubscriptionStore &subscriptions,
                     EngineLog &log, FetchPolicy &policy);

    // At start: everything as stored, and the log file's path for consumers to read.
    void readAll();
    // SetSettings has written these keys (inside its transaction).
    void written(const QString &consumerId, const QString &section, const QStringList &keys);

private:
    void readNetwork();
    void readLoad();
    void readLog();
    void moveDefaultSchedule();
    [[nodiscard]] int engineNumber(const QString &key, int fallback, int lowest, int highest);

    SettingsStore &m_settings;
    EngineDefaults &m_defaults;
    SubscriptionStore &m_subscriptions;
    EngineLog &m_log;
    FetchPolicy &m_policy;
};

} // namespace quillon
