#pragma once

#include <QtGlobal>

// IDs of the dialogs' texts in configstrings.xml.
namespace DialogStrings {
inline constexpr qint32 ButtonOK = 8001;
inline constexpr qint32 ButtonYes = 8002;
inline constexpr qint32 ButtonNo = 8003;
inline constexpr qint32 ButtonCancel = 8004;
inline constexpr qint32 SuppressWarnings = 8005;
inline constexpr qint32 EnclosureTitle = 8010;
inline constexpr qint32 EnclosurePrompt = 8011;
inline constexpr qint32 EnclosureApplyToAll = 8012;
inline constexpr qint32 LoginTitle = 8020;
inline constexpr qint32 LoginPrompt = 8021;
inline constexpr qint32 LoginUserName = 8022;
inline constexpr qint32 LoginPassword = 8023;
} // namespace DialogStrings
