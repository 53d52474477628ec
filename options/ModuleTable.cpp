#include "ModuleTable.h"

#include "DialogAnswer.h"

ModuleTable ModuleTable::Standard()
{
    return ModuleTable({
        CModuleRecord("GeneralProp", "General Settings", "GeneralUI1"),
        CModuleRecord("OnlineProp", "Corvell Online Settings", "OnlineUI1"),
        CModuleRecord("IEPluginProp", "Internet Explorer Settings", "IEPluginUI1"),
        CModuleRecord("PodcastingProp", "Enclosure Handling Settings", "PodcastingUI1"),
        CModuleRecord("PublishingProp", "Publishing Settings", "PublishingUI1"),
        CModuleRecord("TagsProp", "Tags Settings", "TagsUI1"),
        CModuleRecord("SubDefaultsProp", "Subscription Defaults", "SubDefaultsUI1"),
        CModuleRecord("OLDefaultsProp", "Outlook Defaults", "OLDefaultsUI1"),
        CModuleRecord("ExportProp", "OPML Export", "ExportUI1"),
    });
}

const CModuleRecord *ModuleTable::Module(int index) const
{
    if (index < 1 || index > Count() || !m_modules.at(index - 1))
        return nullptr;
    return &*m_modules.at(index - 1);
}

int ModuleTable::OpeningRow(const QString &savedName) const
{
    // The fallback is a display name, never a registry name: a first run lands on row 0.
    const QString wanted = savedName.isEmpty() ? QStringLiteral("Outlook Defaults") : savedName;
    int row = 0;
    for (int i = 1; i <= Count(); ++i) {
        if (const CModuleRecord *module = Module(i); module && module->ModuleRegistryName() == wanted)
            row = i - 1;
    }
    return row;
}

ModuleTable::Click ModuleTable::OnClick(int clickedModule, int currentModule, bool unappliedChanges)
{
    if (clickedModule == currentModule)
        return Click::Nothing;
    return unappliedChanges ? Click::Ask : Click::Switch;
}

ModuleTable::Answer ModuleTable::OnAnswer(DialogAnswer answer)
{
    switch (answer) {
    case DialogAnswer::Yes:
        return Answer::ApplyThenSwitch;
    case DialogAnswer::No:
        return Answer::ReloadThenSwitch;
    default:
        return Answer::Stay;
    }
}

bool ModuleTable::ValidatesBeforeApply(const CModuleRecord &module)
{
    return module.ModulePaneName() == QLatin1String("OLDefaultsUI1") ||
           module.ModulePaneName() == QLatin1String("OnlineUI1");
}
