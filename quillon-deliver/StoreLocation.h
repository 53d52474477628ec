#pragma once

#include "DeliveryAgent.h"
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
    // Asks resolve() again each time it is called, and answers a store only when the root
    // changed from current (a new store the user made while delivery runs).
    [[nodiscard]] static std::function<std::optional<DeliveryAgent::Relocation>()>
    relocator(quillon::SubscribeClientPtr client, QString defaultRoot, QString current);
    // The folder index kept inside a Maildir tree.
    [[nodiscard]] static QString indexPath(const QString &root);
    // Moves every folder and message of one Maildir tree into another; false when one stays.
    static bool moveTree(const QString &from, const QString &to);
};
