#pragma once

#include "OpmlOutline.h"

#include <QList>
#include <QString>

namespace quillon {

// Reads the subscriptions another feed reader keeps on this computer, as an outline tree
// like an OPML import's.
class ReaderImporter
{
public:
    virtual ~ReaderImporter() = default;

    // The name consumers ask for ("newsgator").
    [[nodiscard]] virtual QString id() const = 0;
    [[nodiscard]] virtual QString title() const = 0;
    // Whether the reader's subscriptions are there to be read.
    [[nodiscard]] virtual bool available() const = 0;
    [[nodiscard]] virtual QList<OpmlOutline> subscriptions() const = 0;
};

} // namespace quillon
