#pragma once

#include <QString>
#include <QUrl>

namespace quillon {

// Relative references in feeds are resolved against xml:base, then the document's address.
// Absolute references are returned exactly as written: ids and links are compared as text.
class LinkResolver
{
public:
    [[nodiscard]] static QString resolve(const QUrl &base, QStringView reference);
    // The same; an absolute reference with nothing to trim is given back without a copy.
    [[nodiscard]] static QString resolve(const QUrl &base, const QString &reference);
    // The base in force inside an element carrying xml:base="xmlBase".
    [[nodiscard]] static QUrl childBase(const QUrl &parent, QStringView xmlBase);
};

} // namespace quillon
