#pragma once

#include "OpmlDocument.h"

#include <QHash>
#include <QStringList>

namespace quillon {

// The flat view of an outline list that an import needs: each distinct feed once, with the
// category paths it was filed under (its enclosing folders and its category attribute); the
// sub-lists it points to; and web pages offered without a feed ("opportunities").
class OpmlCatalog
{
public:
    struct Feed
    {
        QString url;
        QString title;
        QList<QStringList> categories; // paths from the top, no duplicates
        // The one-level category paths, which readers commonly show as tags.
        [[nodiscard]] QStringList tags() const;
    };
    struct Link
    {
        QString url;
        QString title;
    };

    [[nodiscard]] static OpmlCatalog fromDocument(const OpmlDocument &document);

    QList<Feed> feeds;
    QList<Link> lists;
    QList<Link> opportunities;

private:
    void walk(const QList<OpmlOutline> &outlines, const QStringList &folders);
    void addFeed(const OpmlOutline &outline, const QString &title, const QStringList &folders);

    QHash<QString, qsizetype> m_feedIndex; // url -> index in feeds
};

} // namespace quillon
