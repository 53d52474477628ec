#pragma once

#include <QString>

// The program's own diagnostic log ("QuillonLog.txt" in the user folder unless the local
// setting "LogFilePathName" says otherwise). Opened and closed on every line; never disturbs
// the user: every failure drops the line silently.
class CLog
{
public:
    // Appends "date-time TAB text1 TAB text2 TAB text3 CR LF" unless "LogFileWanted" is 0 and
    // force is false.
    static void SaveMessage(const QString &text1, const QString &text2 = QString(),
                            const QString &text3 = QString(), bool force = false);
    // The log is never shortened by the program.
    static bool Truncate() { return false; }

    // The joined home drive and path (or the home folder where those are not set).
    [[nodiscard]] static QString HomeFolder();
    // Where the log lives by default, ending with a separator: on Windows HomeFolder +
    // "Marrowby Software" + "Quill On", elsewhere the user's XDG state folder + "ConfigConsumer".
    [[nodiscard]] static QString UserFolder();
    // HomeFolder + "Marrowby Software" + "Quill On": the default of earlier versions everywhere.
    [[nodiscard]] static QString EarlierUserFolder();
    [[nodiscard]] static QString LogFilePath();
    // Moves a log left in the earlier folder to the default one, once, and removes the emptied
    // folders; does nothing when the user named a log file or both folders are the same.
    static void MoveEarlierLog();
};
