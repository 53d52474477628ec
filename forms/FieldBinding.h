#pragma once

#include <QString>
#include <QStringList>

class SettingStore;

// How a stored text shows in its control and is taken back from it.
enum class FieldCodec {
    Flag,        // check box or option: "1" set, "0" clear
    Word,        // check box or option: "True" / "False"
    Text,        // line edit or label
    Secret,      // masked line edit; the first key after the focus arrives empties it
    Number,      // slider, spin box, or a line edit holding a whole number
    Seconds,     // number in the control, unit in `unit`; below 0 shows the default, as does
                 // 0 with a `toggle`, which then shows clear
    ChoiceIndex, // combo box, stored as the chosen index
    ChoiceText,  // combo box, or the `options`, stored as the text of `choices` at that place
};

// One control of a page: where its value lives and how it shows. Written with designated
// initialisers, in this order; every member has a default, so a row names only what it needs.
struct FieldBinding
{
    QString control = {}; // objectName of the control
    SettingStore *store = nullptr;
    QString key = {};
    QString defaultValue = {};
    FieldCodec codec = FieldCodec::Text;
    QString hotHelp = {};
    QString unit = {};        // Seconds: objectName of the unit box
    QString toggle = {};      // Seconds: the check box that switches the time on; clear stores 0
    QString offOption = {};   // Flag or Word on an option: the option that shows "clear"
    QStringList choices = {}; // ChoiceText: the stored texts, by index
    QStringList options = {}; // ChoiceText over options: their objectNames, in the order of choices
    QString label = {};       // the field in words, for messages ("the update frequency")
};
