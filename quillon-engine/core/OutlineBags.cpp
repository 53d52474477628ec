#include "OutlineBags.h"

namespace quillon {

namespace {
void setIfAny(PropertyBag &bag, const char *name, const QString &value)
{
    if (!value.isEmpty())
        bag.setText(QLatin1String(name), value);
}
} // namespace

ListPtr OutlineBags::tree(const QList<OpmlOutline> &outlines, const QUrl &base)
{
    auto list = PropertyList::create();
    for (const OpmlOutline &outline : outlines) {
        BagPtr node = bag(outline, base);
        if (!outline.children.isEmpty())
            node->set(QStringLiteral("children"), tree(outline.children, base));
        list->append(node);
    }
    return list;
}

ListPtr OutlineBags::feeds(const QList<OpmlOutline> &outlines, const QUrl &base)
{
    auto list = PropertyList::create();
    collectFeeds(outlines, base, *list);
    return list;
}

void OutlineBags::collectFeeds(const QList<OpmlOutline> &outlines, const QUrl &base, PropertyList &into)
{
    for (const OpmlOutline &outline : outlines) {
        if (outline.isFeed())
            into.append(bag(outline, base));
        else
            collectFeeds(outline.children, base, into);
    }
}

BagPtr OutlineBags::bag(const OpmlOutline &outline, const QUrl &base)
{
    auto node = PropertyBag::create();
    setIfAny(*node, "title", outline.title);
    setIfAny(*node, "text", outline.text);
    setIfAny(*node, "description", outline.description);
    // Present but empty still marks a feed; an address withheld for safety marks nothing.
    const QString feedUrl = resolved(outline.xmlUrl, base);
    if (!feedUrl.isEmpty() || (outline.hasXmlUrl && outline.xmlUrl.isEmpty()))
        node->setText(QStringLiteral("xmlUrl"), feedUrl);
    setIfAny(*node, "htmlUrl", resolved(outline.htmlUrl, base));
    setIfAny(*node, "type", outline.type);
    setIfAny(*node, "url", resolved(outline.url, base));
    setIfAny(*node, "category", outline.category);
    return node;
}

bool OutlineBags::isWebAddress(const QString &address)
{
    const QString scheme = QUrl(address).scheme().toLower();
    if (scheme == QLatin1String("feed")) {
        // "feed://host/x" is http; "feed:<address>" wraps one, which must itself be on the web.
        const QString inner = address.mid(5);
        return inner.startsWith(QLatin1String("//")) || isWebAddress(inner);
    }
    return scheme == QLatin1String("http") || scheme == QLatin1String("https") || scheme.isEmpty();
}

QString OutlineBags::resolved(const QString &address, const QUrl &base)
{
    // Only web and file documents have a place that relative addresses hang from.
    const QString scheme = base.scheme().toLower();
    const bool remote = scheme == QLatin1String("http") || scheme == QLatin1String("https");
    if (address.isEmpty() || !(remote || scheme == QLatin1String("file")))
        return address;
    const QUrl url(address);
    const QString full = url.isRelative() ? base.resolved(url).toString() : address;
    // A document from the web names web addresses only: local files are opened by the user's
    // own hand, never because a remote list says so.
    if (remote && !isWebAddress(full))
        return QString();
    return full;
}

} // namespace quillon
