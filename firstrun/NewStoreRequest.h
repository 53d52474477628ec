#pragma once

#include "SubscribeClient.h"

#include <QString>

// What the mail delivery is asked to make: a new personal-folders store, which here is a
// separate Maildir tree named like the file without ".pst". It reads the four keys of
// "OLCONSUMER"/"OutlookDefaults" at its next folder check and acts once.
struct NewStoreRequest
{
    enum class Mode { CreateOnly, CreateAndMove };

    QString displayName;
    QString folder;   // "" lets the delivery put it beside the current tree
    QString fileName; // "Corvell.pst"
    Mode mode = Mode::CreateOnly;

    // "0" makes the store empty, "1" moves the delivered mail into it.
    [[nodiscard]] static QString ModeCode(Mode mode);
    // Throws quillon::EngineError when the engine fails.
    void Write(quillon::SubscribeClient &client) const;
};
