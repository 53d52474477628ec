#include "CRegistry.h"

#include "LocalSettings.h"

#include <QLoggingCategory>
#include <QSettings>

// Without a registry the vendor branch is an ini file of its own, beside (never inside) the
// local store, with each key path as a group.

Q_LOGGING_CATEGORY(lcRegistry, "corvell.services.registry")

struct CRegistry::Backend
{
    std::unique_ptr<QSettings> file;
    QString group;
    QStringList subkeys;
    int nextSubkey = 0;
};

namespace {
QString registryFile()
{
    return LocalSettings::BaseFolder() + QStringLiteral("/Marrowby Software/registry.ini");
}

QString groupFor(const QString &rootName, const QString &keyPath)
{
    QString root = rootName.toUpper();
    if (root == QLatin1String("HKCU"))
        root = QStringLiteral("HKEY_CURRENT_USER");
    QStringList parts = QString(keyPath)
                            .replace(QLatin1Char('\\'), QLatin1Char('/'))
                            .split(QLatin1Char('/'), Qt::SkipEmptyParts);
    parts.prepend(root);
    return parts.join(QLatin1Char('/'));
}

bool groupExists(QSettings &file, const QString &group)
{
    file.beginGroup(group);
    const bool exists = !file.childKeys().isEmpty() || !file.childGroups().isEmpty();
    file.endGroup();
    return exists;
}
} // namespace

CRegistry::CRegistry() : m_backend(std::make_unique<Backend>()) {}

CRegistry::~CRegistry() = default;

bool CRegistry::OpenKeyIn(const QString &rootName, const QString &keyPath, bool create)
{
    CloseKey();
    auto file = std::make_unique<QSettings>(registryFile(), QSettings::IniFormat);
    file->setAtomicSyncRequired(true);
    const QString group = groupFor(rootName, keyPath);
    const bool exists = groupExists(*file, group);
    if (!exists && !create)
        return false;
    m_isNewKey = !exists;
    m_backend->file = std::move(file);
    m_backend->group = group;
    return true;
}

void CRegistry::CloseKey()
{
    m_backend->file.reset();
    m_backend->group.clear();
    m_backend->subkeys.clear();
    m_backend->nextSubkey = 0;
}

QString CRegistry::GetString(const QString &valueName, const QString &defaultValue)
{
    if (!m_backend->file)
        return defaultValue;
    const QString key = m_backend->group + QLatin1Char('/') + valueName;
    if (!m_backend->file->contains(key))
        return defaultValue;
    return m_backend->file->value(key).toString();
}

qint32 CRegistry::GetLong(const QString &valueName, qint32 defaultValue)
{
    bool ok = false;
    const qint32 value = GetString(valueName).toInt(&ok);
    return ok ? value : defaultValue;
}

bool CRegistry::PutString(const QString &valueName, const QString &value)
{
    if (!m_backend->file)
        return false;
    m_backend->file->setValue(m_backend->group + QLatin1Char('/') + valueName, value);
    m_backend->file->sync();
    if (m_backend->file->status() != QSettings::NoError) {
        LocalSettings::ReportUnsaved(m_backend->file->fileName());
        return false;
    }
    return true;
}

bool CRegistry::PutLong(const QString &valueName, qint32 value)
{
    return PutString(valueName, QString::number(value));
}

QString CRegistry::FindFirst()
{
    if (!m_backend->file)
        return QString();
    m_backend->file->beginGroup(m_backend->group);
    m_backend->subkeys = m_backend->file->childGroups();
    m_backend->file->endGroup();
    m_backend->nextSubkey = 0;
    return FindNext();
}

QString CRegistry::FindNext()
{
    if (m_backend->nextSubkey >= m_backend->subkeys.size())
        return QString();
    return m_backend->subkeys.at(m_backend->nextSubkey++);
}
