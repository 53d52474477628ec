#include "OpmlCatalog.h"

namespace quillon {

namespace {

// OPML's "text" is the line a reader shows; "title" stands in when it is empty.
QString catalogTitle(const OpmlOutline &outline)
{
    return outline.text.isEmpty() ? outline.title : outline.text;
}

// "tag, /top/sub" -> [tag], [top, sub]; blank segments and empty paths vanish.
QList<QStringList> pathsOfCategory(const QString &category)
{
    QList<QStringList> paths;
    for (QStringView item : QStringView(category).split(u',')) {
        QStringList path;
        for (QStringView segment : item.split(u'/')) {
            if (!segment.trimmed().isEmpty())
                path.append(segment.trimmed().toString());
        }
        if (!path.isEmpty())
            paths.append(path);
    }
    return paths;
}

void addPath(QList<QStringList> &paths, const QStringList &path)
{
    if (!path.isEmpty() && !paths.contains(path))
        paths.append(path);
}

} // namespace

QStringList OpmlCatalog::Feed::tags() const
{
    QStringList tags;
    for (const QStringList &path : categories) {
        if (path.size() == 1)
            tags.append(path.first());
    }
    return tags;
}

OpmlCatalog OpmlCatalog::fromDocument(const OpmlDocument &document)
{
    OpmlCatalog catalog;
    catalog.walk(document.outlines, {});
    return catalog;
}

void OpmlCatalog::walk(const QList<OpmlOutline> &outlines, const QStringList &folders)
{
    for (const OpmlOutline &outline : outlines) {
        const QString title = catalogTitle(outline);
        const QString subList = outline.subListUrl();
        if (!subList.isEmpty()) {
            lists.append({subList, title});
            continue; // its children belong to the other list
        }
        if (outline.isFeed())
            addFeed(outline, title, folders);
        else if (!outline.htmlUrl.isEmpty() && outline.children.isEmpty())
            opportunities.append({outline.htmlUrl, title});
        if (!outline.children.isEmpty())
            walk(outline.children,
                 outline.xmlUrl.isEmpty() && !title.isEmpty() ? folders + QStringList{title} : folders);
    }
}

void OpmlCatalog::addFeed(const OpmlOutline &outline, const QString &title, const QStringList &folders)
{
    qsizetype index = m_feedIndex.value(outline.xmlUrl, -1);
    if (index < 0) {
        index = feeds.size();
        m_feedIndex.insert(outline.xmlUrl, index);
        feeds.append({outline.xmlUrl, title, {}});
    }
    Feed &feed = feeds[index];
    addPath(feed.categories, folders);
    for (const QStringList &path : pathsOfCategory(outline.category))
        addPath(feed.categories, path);
}

} // namespace quillon
