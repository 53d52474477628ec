#include "SyncSettings.h"

#include "SettingsStore.h"

namespace quillon {

void SyncSettings::write(const OperationArguments &args)
{
    const auto store = [this](const char *key, const QString &value) {
        m_store.setValue(kConsumer, kSection, QLatin1String(key), value);
    };
    store("SyncRemote", args.number(0) != 0 ? QStringLiteral("1") : QStringLiteral("0"));
    store("SyncServer", args.text(1));
    store("SyncUser", args.text(2));
    store("SyncPassword", args.text(3));
    store("SyncFrequency", QString::number(args.number(4)));
}

BagPtr SyncSettings::read() const
{
    const auto stored = [this](const char *key, const QString &fallback) {
        return m_store.value(kConsumer, kSection, QLatin1String(key)).value_or(fallback);
    };
    auto bag = PropertyBag::create();
    bag->setLong(QStringLiteral("SyncRemote"), stored("SyncRemote", QStringLiteral("0")).toInt());
    bag->setText(QStringLiteral("SyncServer"), stored("SyncServer", QString()));
    bag->setText(QStringLiteral("SyncUser"), stored("SyncUser", QString()));
    bag->setText(QStringLiteral("SyncPassword"), stored("SyncPassword", QString()));
    bag->setLong(QStringLiteral("SyncFrequency"), stored("SyncFrequency", QStringLiteral("-1")).toInt());
    return bag;
}

} // namespace quillon
