#pragma once

#include <QList>
#include <QString>

namespace quillon {

// One <outline> with the attributes a feed reader uses, trimmed, and its children.
struct OpmlOutline
{
    QString text;
    QString title;
    QString description;
    QString xmlUrl;
    QString htmlUrl;
    QString url; // the address of a type="link" or type="include" sub-list
    QString type;
    QString category;
    QList<OpmlOutline> children;
    bool hasXmlUrl = false; // the attribute is there, even when empty: the outline is then a feed

    // What a list shows for the outline: its title, else its text.
    [[nodiscard]] QString displayTitle() const { return title.isEmpty() ? text : title; }
    [[nodiscard]] bool isFeed() const
    {
        return !xmlUrl.isEmpty() && type.compare(u"source", Qt::CaseInsensitive) != 0;
    }
    // A pointer to another outline list rather than a feed.
    [[nodiscard]] QString subListUrl() const
    {
        if (type.compare(u"link", Qt::CaseInsensitive) == 0 ||
            type.compare(u"include", Qt::CaseInsensitive) == 0)
            return url;
        return type.compare(u"source", Qt::CaseInsensitive) == 0 ? xmlUrl : QString();
    }
};

} // namespace quillon
