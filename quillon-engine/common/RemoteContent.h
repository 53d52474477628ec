#pragma once

#include <QString>

namespace quillon {

// Whatever in an article's HTML would be fetched from the web when the page is drawn, held
// back until the reader asks for it: an image becomes a link to it, and any other element loses
// the address it would load (a video's poster, a table's background), its source kept as a link.
class RemoteContent
{
public:
    // html as the engine keeps a body: normalised, values double-quoted.
    [[nodiscard]] static QString asLinks(const QString &html);

    // The reader's choice per subscription: a setting of the delivery consumer in this section,
    // keyed by the feed's address, "1" when its remote content is shown.
    static inline const QString kConsumer = QStringLiteral("OLCONSUMER");
    static inline const QString kSection = QStringLiteral("ShowImages");
};

} // namespace quillon
