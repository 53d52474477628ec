#include "CRegistry.h"

#include <windows.h>

#include <string>

struct CRegistry::Backend
{
    HKEY key = nullptr;
    DWORD nextSubkey = 0;
};

namespace {
HKEY rootFor(const QString &rootName)
{
    const QString name = rootName.toUpper();
    if (name == QLatin1String("HKEY_CURRENT_USER") || name == QLatin1String("HKCU"))
        return HKEY_CURRENT_USER;
    if (name == QLatin1String("HKEY_LOCAL_MACHINE") || name == QLatin1String("HKLM"))
        return HKEY_LOCAL_MACHINE;
    if (name == QLatin1String("HKEY_CLASSES_ROOT") || name == QLatin1String("HKCR"))
        return HKEY_CLASSES_ROOT;
    if (name == QLatin1String("HKEY_USERS"))
        return HKEY_USERS;
    return nullptr;
}

std::wstring wide(const QString &text)
{
    return text.toStdWString();
}

QString trimmedPath(const QString &keyPath)
{
    QString path = keyPath;
    while (path.endsWith(QLatin1Char('\\')))
        path.chop(1);
    return path;
}
} // namespace

CRegistry::CRegistry() : m_backend(std::make_unique<Backend>()) {}

CRegistry::~CRegistry()
{
    CloseKey();
}

bool CRegistry::OpenKeyIn(const QString &rootName, const QString &keyPath, bool create)
{
    CloseKey();
    const HKEY root = rootFor(rootName);
    if (!root)
        return false;
    const std::wstring path = wide(trimmedPath(keyPath));
    HKEY key = nullptr;
    if (create) {
        DWORD disposition = 0;
        if (RegCreateKeyExW(root, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_READ | KEY_WRITE,
                            nullptr, &key, &disposition) != ERROR_SUCCESS)
            return false;
        m_isNewKey = disposition == REG_CREATED_NEW_KEY;
    } else {
        // Keys the user may only read still open for reading.
        if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ | KEY_WRITE, &key) != ERROR_SUCCESS &&
            RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
            return false;
        m_isNewKey = false;
    }
    m_backend->key = key;
    return true;
}

void CRegistry::CloseKey()
{
    if (m_backend->key)
        RegCloseKey(m_backend->key);
    m_backend->key = nullptr;
    m_backend->nextSubkey = 0;
}

QString CRegistry::GetString(const QString &valueName, const QString &defaultValue)
{
    if (!m_backend->key)
        return defaultValue;
    const std::wstring name = wide(valueName);
    DWORD type = 0;
    DWORD size = 0;
    if (RegQueryValueExW(m_backend->key, name.c_str(), nullptr, &type, nullptr, &size) != ERROR_SUCCESS)
        return defaultValue;
    if (type == REG_DWORD)
        return QString::number(GetLong(valueName, 0));
    if (type != REG_SZ && type != REG_EXPAND_SZ)
        return defaultValue;
    std::wstring buffer(size / sizeof(wchar_t) + 1, L'\0');
    if (RegQueryValueExW(m_backend->key, name.c_str(), nullptr, &type,
                         reinterpret_cast<BYTE *>(buffer.data()), &size) != ERROR_SUCCESS)
        return defaultValue;
    // The stored text may or may not carry its terminating zero.
    return QString::fromWCharArray(buffer.c_str());
}

qint32 CRegistry::GetLong(const QString &valueName, qint32 defaultValue)
{
    if (!m_backend->key)
        return defaultValue;
    const std::wstring name = wide(valueName);
    DWORD type = 0;
    DWORD value = 0;
    DWORD size = sizeof(value);
    const LONG status = RegQueryValueExW(m_backend->key, name.c_str(), nullptr, &type,
                                         reinterpret_cast<BYTE *>(&value), &size);
    if (status == ERROR_SUCCESS && type == REG_DWORD)
        return qint32(value);
    if (status == ERROR_MORE_DATA || (status == ERROR_SUCCESS && type == REG_SZ)) {
        bool ok = false;
        const qint32 number = GetString(valueName).toInt(&ok);
        return ok ? number : defaultValue;
    }
    return defaultValue;
}

bool CRegistry::PutString(const QString &valueName, const QString &value)
{
    if (!m_backend->key)
        return false;
    const std::wstring name = wide(valueName);
    const std::wstring data = wide(value);
    return RegSetValueExW(m_backend->key, name.c_str(), 0, REG_SZ,
                          reinterpret_cast<const BYTE *>(data.c_str()),
                          DWORD((data.size() + 1) * sizeof(wchar_t))) == ERROR_SUCCESS;
}

bool CRegistry::PutLong(const QString &valueName, qint32 value)
{
    if (!m_backend->key)
        return false;
    const std::wstring name = wide(valueName);
    const DWORD data = DWORD(value);
    return RegSetValueExW(m_backend->key, name.c_str(), 0, REG_DWORD, reinterpret_cast<const BYTE *>(&data),
                          sizeof(data)) == ERROR_SUCCESS;
}

QString CRegistry::FindFirst()
{
    m_backend->nextSubkey = 0;
    return FindNext();
}

QString CRegistry::FindNext()
{
    if (!m_backend->key)
        return QString();
    wchar_t name[256];
    DWORD length = 256;
    if (RegEnumKeyExW(m_backend->key, m_backend->nextSubkey, name, &length, nullptr, nullptr, nullptr,
                      nullptr) != ERROR_SUCCESS)
        return QString();
    ++m_backend->nextSubkey;
    return QString::fromWCharArray(name, int(length));
}
