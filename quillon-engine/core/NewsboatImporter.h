#pragma once

#include "ReaderImporter.h"

#include <QByteArray>

namespace quillon {

// newsboat's (and its predecessor newsbeuter's) "urls" file: one feed a line, then its tags.
// A feed is filed under the folder of its first tag and keeps the others as its categories;
// a "~Title" tag names it; "!" (hidden) tags are tags; query feeds and commands are skipped.
class NewsboatImporter final : public ReaderImporter
{
public:
    [[nodiscard]] QString id() const override { return QStringLiteral("newsboat"); }
    [[nodiscard]] QString title() const override { return QStringLiteral("Newsboat"); }
    [[nodiscard]] bool available() const override;
    [[nodiscard]] QList<OpmlOutline> subscriptions() const override;

    // The outline tree of a urls file's text.
    [[nodiscard]] static QList<OpmlOutline> read(const QByteArray &urls);

private:
    [[nodiscard]] static QString urlsFile();
};

} // namespace quillon
