#pragma once

#include <QString>

// Values in the vendor branch: HKEY_CURRENT_USER, "Software\Marrowby Software\" + product + "\"
// + section. Callers pass the product word "Quill On".
[[nodiscard]] QString GetRegistrySetting(const QString &product, const QString &section, const QString &name,
                                         const QString &defaultValue);
bool PutRegistrySetting(const QString &product, const QString &section, const QString &name,
                        const QString &value);
