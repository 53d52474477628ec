#pragma once

#include "SubscribeClient.h"

#include <QString>

// Where the Maildir tree is: "StoreRoot" of the Outlook defaults once a new store was made,
// else the default. A new store asked for by first run or the Outlook defaults page
// ("MakeNewPST_fileName", "MakeNewPST_path", "MakeNewPST_mode") is made here, once, with the
// existing mail moved into it when "MakeNewPST_mode" is "1".
class StoreLocation
{
public:
    // Returns the root to deliver into; engine failures leave the default.
    [[nodiscard]] static QString resolve(quillon::SubscribeClient &client, const QString &defaultRoot);
    // Moves every folder and message of one Maildir tree into another; false when one stays.
    static bool moveTree(const QString &from, const QString &to);
};
