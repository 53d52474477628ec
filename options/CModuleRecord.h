#pragma once

#include <QString>

// One entry of the options window's module list.
class CModuleRecord
{
public:
    CModuleRecord() = default;
    CModuleRecord(QString registryName, QString displayName, QString paneName)
        : m_registryName(std::move(registryName)), m_displayName(std::move(displayName)),
          m_paneName(std::move(paneName))
    {
    }

    // Stable key: names the module's icon and is remembered as the module last shown.
    [[nodiscard]] const QString &ModuleRegistryName() const { return m_registryName; }
    void SetModuleRegistryName(const QString &name) { m_registryName = name; }
    // The text of the module's row.
    [[nodiscard]] const QString &ModuleDisplayName() const { return m_displayName; }
    void SetModuleDisplayName(const QString &name) { m_displayName = name; }
    // Which page shows the module.
    [[nodiscard]] const QString &ModulePaneName() const { return m_paneName; }
    void SetModulePaneName(const QString &name) { m_paneName = name; }

private:
    QString m_registryName;
    QString m_displayName;
    QString m_paneName;
};
