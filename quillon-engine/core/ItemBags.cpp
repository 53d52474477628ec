#include "ItemBags.h"

#include "ArticleText.h"
#include "SubscriptionFields.h"

#include <limits>

namespace quillon {

namespace {
void setIfAny(PropertyBag &bag, const QString &name, const QString &value)
{
    if (!value.isEmpty())
        bag.setText(name, value);
}
} // namespace

BagPtr ItemBags::item(const Article &article)
{
    auto bag = PropertyBag::create();
    bag->setText(QStringLiteral("SUBJECT"), article.subject);
    setIfAny(*bag, QStringLiteral("URL"), article.url);
    bag->setText(QStringLiteral("BODY"), article.body);
    setIfAny(*bag, QStringLiteral("AUTHOR"), article.author);
    const QDateTime date = article.published.isValid() ? article.published : article.updated;
    if (date.isValid())
        bag->setText(QStringLiteral("DATE"), SubscriptionFields::isoDate(date));
    bag->setText(QStringLiteral("GUID"), article.key);
    if (!article.enclosures.isEmpty()) {
        auto list = PropertyList::create();
        for (const ParsedEnclosure &e : article.enclosures)
            list->append(enclosure(e));
        bag->set(QStringLiteral("ENCLOSURES"), list);
    }
    return bag;
}

BagPtr ItemBags::enclosure(const ParsedEnclosure &enclosure)
{
    auto bag = PropertyBag::create();
    bag->setText(QStringLiteral("URL"), enclosure.url);
    setIfAny(*bag, QStringLiteral("TYPE"), enclosure.type);
    if (enclosure.length >= 0 && enclosure.length <= std::numeric_limits<qint32>::max())
        bag->setLong(QStringLiteral("LENGTH"), qint32(enclosure.length));
    setIfAny(*bag, QStringLiteral("FILE"), enclosure.file);
    return bag;
}

BagPtr ItemBags::previewDetails(const ParsedFeed &feed, const QString &url)
{
    auto details = PropertyBag::create();
    details->setText(QStringLiteral("URL"), url);
    details->setText(QStringLiteral("TITLE"), ArticleText::plain(feed.title));
    details->setText(QStringLiteral("DESCRIPTION"), ArticleText::plain(feed.description));
    setIfAny(*details, QStringLiteral("LINK"), feed.link);
    setIfAny(*details, QStringLiteral("FORMAT"), feed.format);
    details->setLong(QStringLiteral("ITEMCOUNT"), qint32(feed.items.size()));
    auto items = PropertyList::create();
    for (const ParsedItem &parsed : feed.items)
        items->append(item(Article::fromParsed(parsed)));
    details->set(QStringLiteral("ITEMS"), items);
    if (!feed.ok())
        details->setText(QStringLiteral("ERROR"), feed.errorText);
    return details;
}

} // namespace quillon
