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
    // HomeFolder + "Marrowby Software" + "Quill On", ending with a separator.
    [[nodiscard]] static QString UserFolder();
    [[nodiscard]] static QString LogFilePath();
};
