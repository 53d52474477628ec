#pragma once

#include <QString>

#include <memory>

// The vendor branch of the per-user registry. On Windows it maps onto advapi32; elsewhere onto
// a per-user ini file with the key path as group. Key paths use backslashes ("Software\...").
// One key is open at a time; every operation fails softly (false, 0 or the default).
class CRegistry
{
public:
    CRegistry();
    ~CRegistry();
    CRegistry(const CRegistry &) = delete;
    CRegistry &operator=(const CRegistry &) = delete;

    // Opens keyPath (DefaultKey when empty) below DefaultHKey. With create, a missing key is
    // made and IsNewKey tells so.
    bool OpenKey(const QString &keyPath = QString(), bool create = false);
    [[nodiscard]] bool IsNewKey() const { return m_isNewKey; }
    [[nodiscard]] QString DefaultKey() const { return m_defaultKey; }
    void SetDefaultKey(const QString &keyPath) { m_defaultKey = keyPath; }
    // The root named by text, e.g. "HKey_Current_User".
    [[nodiscard]] QString DefaultHKey() const { return m_defaultHKey; }
    void SetDefaultHKey(const QString &rootName) { m_defaultHKey = rootName; }
    void CloseKey();
    [[nodiscard]] qint32 GetLong(const QString &valueName, qint32 defaultValue = 0);
    [[nodiscard]] QString GetString(const QString &valueName, const QString &defaultValue = QString());
    bool PutLong(const QString &valueName, qint32 value);
    bool PutString(const QString &valueName, const QString &value);
    // Names of the open key's subkeys, one per call; "" when there are no more.
    [[nodiscard]] QString FindFirst();
    [[nodiscard]] QString FindNext();
    // One-shot access: opens, reads or writes (creating the key), closes.
    bool PutRegistryValue(const QString &rootName, const QString &keyPath, const QString &valueName,
                          const QString &value);
    [[nodiscard]] QString GetRegistryValue(const QString &rootName, const QString &keyPath,
                                           const QString &valueName, const QString &defaultValue);

private:
    // Platform part: opens keyPath below the named root, closing any key open before.
    bool OpenKeyIn(const QString &rootName, const QString &keyPath, bool create);

    struct Backend;
    std::unique_ptr<Backend> m_backend;
    QString m_defaultKey = QStringLiteral("Software\\Microsoft\\Office\\");
    QString m_defaultHKey = QStringLiteral("HKey_Current_User");
    bool m_isNewKey = false;
};
