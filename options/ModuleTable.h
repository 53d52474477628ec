#pragma once

#include "CModuleRecord.h"

#include <QList>

#include <optional>

enum class DialogAnswer;

// The options window's list of modules and the rules of moving between them, without widgets.
// Modules are numbered from 1, rows from 0; module 0 is "none".
class ModuleTable
{
public:
    // What a click on a row asks of the window.
    enum class Click { Nothing, Switch, Ask };
    // What the window does after the save question.
    enum class Answer { ApplyThenSwitch, ReloadThenSwitch, Stay };

    // The nine modules, in their row order.
    [[nodiscard]] static ModuleTable Standard();
    // An empty slot stands for a module entry that went missing.
    explicit ModuleTable(QList<std::optional<CModuleRecord>> modules) : m_modules(std::move(modules)) {}

    [[nodiscard]] int Count() const { return int(m_modules.size()); }
    // Null outside 1..Count and for an empty slot.
    [[nodiscard]] const CModuleRecord *Module(int index) const;

    // The row shown at opening for the saved "CurrentOptionsModule"; row 0 when nothing matches.
    [[nodiscard]] int OpeningRow(const QString &savedName) const;
    [[nodiscard]] static Click OnClick(int clickedModule, int currentModule, bool unappliedChanges);
    [[nodiscard]] static Answer OnAnswer(DialogAnswer answer);
    // The online and Outlook-defaults pages are validated before they are applied.
    [[nodiscard]] static bool ValidatesBeforeApply(const CModuleRecord &module);

private:
    QList<std::optional<CModuleRecord>> m_modules;
};
