#pragma once

#include <QString>

#include <functional>

class QWidget;

// Every modal question and alert of the program passes through here, so that tests can
// answer them without a screen. The dialogs library installs the real forms at start-up.
enum class PromptKind {
    MessageBox,          // a plain box with an OK button
    Alert,               // frmAlert
    YesNo,               // frmYesNoQuestion: 6 or 7
    DoYouWantToSave,     // frmDoYouWantToSave: 6, 7 or 2
    AreYouSure,          // frmAreYouSure: 6 or 2, and suppressChecked
    EnclosureWarning,    // frmEnclosureWarning: 1 or 0, and applyToAll
    UserNameAndPassword, // frmUserNameAndPassword: 1 (OK) or 0, and the two texts
};

struct Prompt
{
    PromptKind kind = PromptKind::MessageBox;
    QWidget *owner = nullptr;
    QString mainText;
    QString extendedText;
    // Answers besides the result code, filled in by whoever answers.
    bool suppressChecked = false;
    bool applyToAll = false;
    QString userName;
    QString password;
};

class PromptSeam
{
public:
    using Handler = std::function<int(Prompt &)>;

    // Asks through the installed handler. With none installed the question is logged and
    // the neutral answer comes back (Cancel, No, or 0).
    static int Ask(Prompt &prompt);
    // Installs a handler and returns the one it replaces.
    static Handler SetHandler(Handler handler);
    static int NeutralAnswer(PromptKind kind);
};
