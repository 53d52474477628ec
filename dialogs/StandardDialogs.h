#pragma once

#include "AreYouSureAnswer.h"

#include <QString>

class QWidget;

// The questions and alerts every window asks. Each goes through PromptSeam, so the answer
// comes from the installed handler: the real forms in the program, a script in tests.

void ShowAlert(QWidget *owner, const QString &mainText, const QString &extendedText);
// 6 (yes) or 7 (no). kind names the question in the diagnostics log.
[[nodiscard]] int AskQuestion(QWidget *owner, const QString &mainText, const QString &extendedText,
                              const QString &kind);
// 6 (save), 7 (do not save) or 2 (cancel).
[[nodiscard]] int AskDoYouWantToSave(QWidget *owner, const QString &mainText, const QString &extendedText);
[[nodiscard]] AreYouSureAnswer AskAreYouSure(QWidget *owner, const QString &mainText,
                                             const QString &extendedText);

// Makes PromptSeam show the dialogs of this library. Called once when the program starts.
void InstallDialogPrompts();
