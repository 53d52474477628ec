#pragma once

#include <QString>

#include <functional>
#include <memory>

class QSettings;

// The per-user store private to this program, addressed by application, section and key.
// On Windows it lives in the registry below HKEY_CURRENT_USER; elsewhere in an ini file in the
// user's config folder. It never shares storage with the vendor branch (CRegistry).
class LocalSettings
{
public:
    [[nodiscard]] static QString Get(const QString &application, const QString &section, const QString &key,
                                     const QString &defaultValue);
    // Each write is flushed at once and replaces the file atomically.
    static bool Save(const QString &application, const QString &section, const QString &key,
                     const QString &value);
    static bool Delete(const QString &application, const QString &section, const QString &key);

    // Points every store of the program (this one and the vendor branch file) at another
    // folder; an empty path restores the user's config folder. Used by tests.
    static void SetBaseFolder(const QString &folder);
    // The folder the file-based stores live in.
    [[nodiscard]] static QString BaseFolder();
    // Where the file of one application lives (not used on Windows without a base folder).
    [[nodiscard]] static QString FilePath(const QString &application);
    // A settings file could not be written: the user hears it once per run (an alert through
    // PromptSeam), the log every time.
    static void ReportUnsaved(const QString &fileName);
    // Lets the next failure alert again; for tests.
    static void ResetUnsavedReport();

private:
    [[nodiscard]] static std::unique_ptr<QSettings> Open(const QString &application);
    // One change inside a section, written at once; a failed write is reported.
    static bool Change(const QString &application, const QString &section,
                       const std::function<void(QSettings &)> &change);
};

[[nodiscard]] QString GetSetting(const QString &application, const QString &section, const QString &key,
                                 const QString &defaultValue = QString());
void SaveSetting(const QString &application, const QString &section, const QString &key,
                 const QString &value);
