#pragma once

#include "CommonValues.h"

#include <QString>

#include <optional>

// The engine's own times, shown where a subscription uses the default or never deletes.
struct EngineTimeDefaults
{
    qint32 updateFreq = 3600;
    qint32 deleteRead = 259200;
    qint32 deleteUnread = 1296000;
};

// What the subscription tab shows over a selection; mixed values hold the markers.
struct SubscriptionTabValues
{
    qint32 updateFreq = CommonValues::kNothingCommon;
    qint32 deleteRead = CommonValues::kNothingCommon;
    qint32 deleteUnread = CommonValues::kNothingCommon;
    QString user;
    QString password;
    QString enclosure = CommonValues::kNothingCommonText; // "1" or "0"
};

// What the Outlook tab shows over a selection.
struct OutlookTabValues
{
    QString storeLocation = CommonValues::kNothingCommonText;
    QString specificFolder;
    QString specificFolderId;
    QString namedFolder = CommonValues::kNothingCommonText; // "1" or "0"
    QString articleTheme = CommonValues::kNothingCommonText;
};

// What an apply writes to each subscription; an empty optional (or "NothingCommon") is left
// as the subscription has it.
struct SubscriptionTabEdits
{
    std::optional<QString> folderTitle;
    QString enclosure = CommonValues::kNothingCommonText;
    std::optional<qint32> updateFreq;
    std::optional<qint32> deleteRead;
    std::optional<qint32> deleteUnread;
    std::optional<QString> user; // user and password go together or not at all
    std::optional<QString> password;
    std::optional<QString> url;
};

struct OutlookTabEdits
{
    std::optional<QString> storeLocation; // with it go the folder, its ID and the moved flag
    QString specificFolder;
    QString specificFolderId;
    std::optional<QString> namedFolder;
    QString articleTheme = CommonValues::kNothingCommonText;
};
