#pragma once

#include "SearchSource.h"

#include <QString>

// The address of a search subscription: "search?" followed by its source, its text and an
// optional number of results, as the engine writes them.
class SearchUrl
{
public:
    // Search subscriptions are told by the first six characters, with case.
    [[nodiscard]] static bool IsSearchUrl(const QString &url);
    [[nodiscard]] static SearchUrl Parse(const QString &url);

    // A limit given by a source counts unless it is empty, " ", "0" or the missing marker.
    [[nodiscard]] static bool LimitCounts(const QString &value);
    // The limit held between the source's minimum and maximum, where those count.
    [[nodiscard]] static qint32 ClampLimit(qint32 limit, const SearchSource &source);

    QString guid;
    QString keywords;
    QString limit; // empty when the address names none

    friend bool operator==(const SearchUrl &, const SearchUrl &) = default;
};
