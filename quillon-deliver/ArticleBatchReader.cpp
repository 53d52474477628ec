#include "ArticleBatchReader.h"

#include "HandleGuard.h"
#include "PropertyBag.h"

using quillon::Handle;

QList<ArticleBatchReader::Outgoing> ArticleBatchReader::read(Handle items)
{
    const FolderDefaults defaults = m_settings.defaults();
    QList<Outgoing> outgoing;
    for (qint32 i = 0, n = m_client.ListCount(items); i < n; ++i) {
        HandleGuard item(m_client, m_client.ListHandle(items, i));
        const SubscriptionPlace *place =
            placeOf(m_client.GetLongValue(item.get(), QStringLiteral("SUBSCRIPTIONID")));
        if (!place)
            continue; // removed meanwhile; its articles went with it
        outgoing.append({readArticle(item.get(), *place, defaults), folderFor(*place, defaults)});
    }
    return outgoing;
}

ArticleMessage ArticleBatchReader::readArticle(Handle item, const SubscriptionPlace &place,
                                               const FolderDefaults &defaults)
{
    const auto text = [this](Handle bag, const QString &name) {
        return quillon::presentText(m_client.GetStringValue(bag, name));
    };
    ArticleMessage a;
    a.articleId = m_client.GetLongValue(item, QStringLiteral("ARTICLEID"));
    a.subscriptionId = place.id;
    a.guid = text(item, QStringLiteral("GUID"));
    a.subject = text(item, QStringLiteral("SUBJECT"));
    a.link = text(item, QStringLiteral("URL"));
    a.author = text(item, QStringLiteral("AUTHOR"));
    a.bodyHtml = text(item, QStringLiteral("BODY"));
    a.date = QDateTime::fromString(text(item, QStringLiteral("DATE")), Qt::ISODate);
    a.feedTitle = place.title;
    a.feedUrl = place.url;
    a.theme = FolderPlan::themeFor(defaults, place);
    a.showImages = place.showImages;
    HandleGuard enclosures(m_client, m_client.GetHandleValue(item, QStringLiteral("ENCLOSURES")));
    if (enclosures.get() > 0) {
        for (qint32 i = 0, n = m_client.ListCount(enclosures.get()); i < n; ++i) {
            HandleGuard e(m_client, m_client.ListHandle(enclosures.get(), i));
            const qint32 length = m_client.GetLongValue(e.get(), QStringLiteral("LENGTH"));
            a.enclosures.append({text(e.get(), QStringLiteral("URL")), text(e.get(), QStringLiteral("TYPE")),
                                 length == quillon::kMissing ? -1 : length});
        }
    }
    return a;
}

const SubscriptionPlace *ArticleBatchReader::placeOf(qint32 subscriptionId)
{
    auto it = m_places.find(subscriptionId);
    if (it == m_places.end())
        it = m_places.insert(subscriptionId, m_settings.place(subscriptionId));
    return it->has_value() ? &**it : nullptr;
}

MailStore::Folder ArticleBatchReader::folderFor(const SubscriptionPlace &place,
                                                const FolderDefaults &defaults)
{
    if (const auto known = m_index.folderOf(place.id))
        return *known;
    const MailStore::Folder folder = FolderPlan::folderFor(defaults, place);
    m_index.setFolder(place.id, folder);
    return folder;
}
