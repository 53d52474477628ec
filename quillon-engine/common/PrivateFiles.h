#pragma once

#include <QString>

namespace quillon {

// Files and folders that hold the user's data or secrets: folders 0700, files 0600. On Windows
// the profile folders are already the user's own, and these do nothing.
namespace PrivateFiles {

// New files of this process are created private (umask 077).
void restrictNewFiles();
// Makes the folder (and its parents) when missing and tightens it to 0700; false when it is
// not a real folder owned by this user afterwards.
[[nodiscard]] bool makePrivateFolder(const QString &path);
// Tightens an existing folder, everything below it, to 0700 folders and 0600 files.
void tightenTree(const QString &path);
// Makes an empty 0600 file when none is there, so that what grows from it (SQLite's journal
// and WAL copy the database's mode) starts private too.
void createPrivateFile(const QString &path);
// Tightens one existing file to 0600; a missing file is fine.
void tightenFile(const QString &path);
// A real folder (not a link), owned by this user, that nobody else may enter.
[[nodiscard]] bool isPrivateFolder(const QString &path);
// The owner of the file is this user (always true on Windows).
[[nodiscard]] bool ownedByMe(const QString &path);

} // namespace PrivateFiles

} // namespace quillon
