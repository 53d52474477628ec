#include "LocalSettings.h"

#include "PromptSeam.h"

#include <QDir>
#include <QLoggingCategory>
#include <QSettings>
#include <QStandardPaths>

Q_LOGGING_CATEGORY(lcLocalSettings, "corvell.services.localsettings")

namespace {
QString &baseFolderOverride()
{
    static QString folder;
    return folder;
}

// Kept apart from the vendor branch ("Marrowby Software") so equal names never meet.
const QString kStoreFolder = QStringLiteral("ConfigConsumer");

bool &unsavedReported()
{
    static bool reported = false;
    return reported;
}
} // namespace

void LocalSettings::ReportUnsaved(const QString &fileName)
{
    qCWarning(lcLocalSettings) << "could not save settings to" << fileName;
    if (std::exchange(unsavedReported(), true))
        return;
    Prompt prompt;
    prompt.kind = PromptKind::Alert;
    prompt.mainText = QStringLiteral("Your settings could not be saved.");
    prompt.extendedText =
        QStringLiteral("The file %1 cannot be written. Changes made in this session will be lost when the "
                       "program ends. Check that the folder exists and that you may write to it.")
            .arg(fileName);
    PromptSeam::Ask(prompt);
}

void LocalSettings::ResetUnsavedReport()
{
    unsavedReported() = false;
}

void LocalSettings::SetBaseFolder(const QString &folder)
{
    baseFolderOverride() = folder;
}

QString LocalSettings::BaseFolder()
{
    if (!baseFolderOverride().isEmpty())
        return baseFolderOverride();
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
}

QString LocalSettings::FilePath(const QString &application)
{
    return BaseFolder() + QLatin1Char('/') + kStoreFolder + QLatin1Char('/') + application +
           QStringLiteral(".ini");
}

std::unique_ptr<QSettings> LocalSettings::Open(const QString &application)
{
    std::unique_ptr<QSettings> settings;
#ifdef Q_OS_WIN
    if (baseFolderOverride().isEmpty()) {
        settings = std::make_unique<QSettings>(QStringLiteral("HKEY_CURRENT_USER\\Software\\") +
                                                   kStoreFolder + QStringLiteral("\\") + application,
                                               QSettings::NativeFormat);
    }
#endif
    if (!settings)
        settings = std::make_unique<QSettings>(FilePath(application), QSettings::IniFormat);
    // Saves go to a temporary file that replaces the old one, never half-written in place.
    settings->setAtomicSyncRequired(true);
    return settings;
}

QString LocalSettings::Get(const QString &application, const QString &section, const QString &key,
                           const QString &defaultValue)
{
    const auto settings = Open(application);
    settings->beginGroup(section);
    return settings->value(key, defaultValue).toString();
}

bool LocalSettings::Save(const QString &application, const QString &section, const QString &key,
                         const QString &value)
{
    return Change(application, section, [&](QSettings &settings) { settings.setValue(key, value); });
}

bool LocalSettings::Delete(const QString &application, const QString &section, const QString &key)
{
    return Change(application, section, [&](QSettings &settings) { settings.remove(key); });
}

bool LocalSettings::Change(const QString &application, const QString &section,
                           const std::function<void(QSettings &)> &change)
{
    const auto settings = Open(application);
    settings->beginGroup(section);
    change(*settings);
    settings->endGroup();
    settings->sync();
    if (settings->status() != QSettings::NoError) {
        ReportUnsaved(settings->fileName());
        return false;
    }
    return true;
}

QString GetSetting(const QString &application, const QString &section, const QString &key,
                   const QString &defaultValue)
{
    return LocalSettings::Get(application, section, key, defaultValue);
}

void SaveSetting(const QString &application, const QString &section, const QString &key, const QString &value)
{
    LocalSettings::Save(application, section, key, value);
}
