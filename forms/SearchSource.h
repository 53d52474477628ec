#pragma once

#include "SubscribeClient.h"

#include <QList>
#include <QString>

// One search source the engine offers, with its limits as the engine gives them (texts that
// may be empty, " ", "0" or the missing marker when the source has no such limit).
struct SearchSource
{
    QString guid;
    QString title;
    QString defaultLimit;
    QString minLimit;
    QString maxLimit;
};

// The sources of a search-sources answer; none when the answer carries no list.
[[nodiscard]] QList<SearchSource> ReadSearchSources(quillon::SubscribeClient &client, quillon::Handle answer);
