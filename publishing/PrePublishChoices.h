#pragma once

#include "SubscribeClient.h"

// How an item is posted, kept as the publishing defaults ("ENGINE", "Publishing_defaults",
// keys "PUBDLG_..."). A key never stored reads as the default given here.
struct PrePublishChoices
{
    bool editFirst = false;
    bool useTitle = true;
    bool useBody = true;
    bool htmlBody = true;
    bool includeTop = true;
    bool includeBottom = true;
    bool includeAd = false;
    bool closeAfterPost = false;
    bool saveInPublishedFolder = false;
    bool showSuccessDialog = true;
    bool parseForLinks = false;
    bool parseForFormatting = false;
    bool alwaysDoCurrentSettings = false;

    // Engine failures propagate as quillon::EngineError.
    [[nodiscard]] static PrePublishChoices Load(quillon::SubscribeClient &client);
    void Save(quillon::SubscribeClient &client) const;
    // Only "PUBDLG_editFirst", which the short request dialog changes on its own.
    void SaveEditFirst(quillon::SubscribeClient &client) const;
};
