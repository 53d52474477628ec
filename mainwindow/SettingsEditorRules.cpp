#include "SettingsEditorRules.h"

#include "CommonValues.h"
#include "PropertyBag.h"

bool SettingsEditorRules::IsDefault(qint32 value)
{
    // A subscription the engine has no value for behaves as one that asks for the default.
    return value == kUseDefault || value == quillon::kMissing;
}

bool SettingsEditorRules::IsRealTime(qint32 value)
{
    return value > 0 && value != CommonValues::kNothingCommon;
}

PairChoice SettingsEditorRules::FrequencyChoice(qint32 common)
{
    if (common == CommonValues::kNothingCommon)
        return PairChoice::None;
    return IsDefault(common) ? PairChoice::Default : PairChoice::Custom;
}

qint32 SettingsEditorRules::FrequencyShown(qint32 common, qint32 engineDefault)
{
    return IsRealTime(common) ? common : engineDefault;
}

PairChoice SettingsEditorRules::DeletionChoice(qint32 read, qint32 unread)
{
    if (read == CommonValues::kNothingCommon || unread == CommonValues::kNothingCommon)
        return PairChoice::None;
    return IsDefault(read) && IsDefault(unread) ? PairChoice::Default : PairChoice::Custom;
}

SettingsEditorRules::DeletionField SettingsEditorRules::DeletionShown(qint32 common, qint32 engineDefault)
{
    if (IsRealTime(common))
        return {true, common};
    return {common != 0, engineDefault};
}
