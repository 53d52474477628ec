#include "RegistrySettings.h"

#include "CRegistry.h"

namespace {
const QString kRoot = QStringLiteral("HKey_Current_User");

QString keyPath(const QString &product, const QString &section)
{
    return QStringLiteral("Software\\Marrowby Software\\") + product + QLatin1Char('\\') + section;
}
} // namespace

QString GetRegistrySetting(const QString &product, const QString &section, const QString &name,
                           const QString &defaultValue)
{
    CRegistry registry;
    return registry.GetRegistryValue(kRoot, keyPath(product, section), name, defaultValue);
}

bool PutRegistrySetting(const QString &product, const QString &section, const QString &name,
                        const QString &value)
{
    CRegistry registry;
    return registry.PutRegistryValue(kRoot, keyPath(product, section), name, value);
}
