#include "CRegistry.h"

// The portable part; each platform file supplies the key operations.

bool CRegistry::OpenKey(const QString &keyPath, bool create)
{
    return OpenKeyIn(m_defaultHKey, keyPath.isEmpty() ? m_defaultKey : keyPath, create);
}

bool CRegistry::PutRegistryValue(const QString &rootName, const QString &keyPath, const QString &valueName,
                                 const QString &value)
{
    if (!OpenKeyIn(rootName, keyPath, true))
        return false;
    const bool written = PutString(valueName, value);
    CloseKey();
    return written;
}

QString CRegistry::GetRegistryValue(const QString &rootName, const QString &keyPath, const QString &valueName,
                                    const QString &defaultValue)
{
    if (!OpenKeyIn(rootName, keyPath, false))
        return defaultValue;
    const QString value = GetString(valueName, defaultValue);
    CloseKey();
    return value;
}
