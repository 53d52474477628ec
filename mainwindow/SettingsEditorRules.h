#pragma once

#include <QString>

// Which option of a default/custom pair a field's common value selects.
enum class PairChoice { None, Default, Custom };

// The rules by which the settings editor turns stored values into what its fields show.
class SettingsEditorRules
{
public:
    // Stored in a time property: use the engine's default.
    static constexpr qint32 kUseDefault = -1;

    // Values of the Outlook consumer's "StoreLocationOption".
    static inline const QString kStoreInParentFolder = QStringLiteral("0");
    static inline const QString kStoreInSpecificFolder = QStringLiteral("1");

    // -1 (or no value at all) selects the default option, a mixed value neither.
    [[nodiscard]] static PairChoice FrequencyChoice(qint32 common);
    // Never, default and mixed show the engine's default; any other value itself.
    [[nodiscard]] static qint32 FrequencyShown(qint32 common, qint32 engineDefault);
    // The deletion pair covers both ages: default only when both use it, neither when one is mixed.
    [[nodiscard]] static PairChoice DeletionChoice(qint32 read, qint32 unread);

    struct DeletionField
    {
        bool checked;
        qint32 seconds;
    };
    // 0 (never) unchecks the age and shows the default; a real age is checked and shown.
    [[nodiscard]] static DeletionField DeletionShown(qint32 common, qint32 engineDefault);

private:
    [[nodiscard]] static bool IsDefault(qint32 value);
    [[nodiscard]] static bool IsRealTime(qint32 value);
};
