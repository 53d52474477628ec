#pragma once

#include <QString>

// The process-wide table of localized texts, read from folder + "/configstrings.xml".
// The file is read line by line, not as XML: every tag sits on its own line.
void LoadStrings(const QString &folder);
// Before LoadStrings: ".LOCERR", and a one-time "strings file not loaded yet" box.
// An ID the file lacks: "".
[[nodiscard]] QString GetLocalizedString(qint32 id);
// Drops the table; look-ups answer as before loading.
void ClearStrings();
// The shipped "QuillonData" folder (quillon::ShippedDataFolder).
[[nodiscard]] QString QuillonDataFolder();
