#pragma once

#include "ParsedEnclosure.h"
#include "ParsedItem.h"

#include <QDateTime>
#include <QList>
#include <QString>

namespace quillon {

// One article as the engine keeps and hands it on: subject in plain text, body in HTML.
struct Article
{
    QString key;
    QString subject;
    QString url;
    QString body;
    QString author;
    QDateTime published; // UTC; invalid when the feed gave none
    QDateTime updated;
    QList<ParsedEnclosure> enclosures;

    // key: guid, else link, else a hash of title and body.
    [[nodiscard]] static Article fromParsed(const ParsedItem &item);
    // The key alone, without building the texts when guid or link gives it.
    [[nodiscard]] static QString keyOf(const ParsedItem &item);
};

} // namespace quillon
