#include "SubscriptionListLoader.h"

#include "CategoryTree.h"
#include "ConsumerSettings.h"
#include "EngineNames.h"
#include "HandleGuard.h"
#include "KeyedCollection.h"
#include "categoriesUtils.h"
#include "commonUtils.h"

#include <QLoggingCategory>

using EngineNames::kNewsClass;

Q_LOGGING_CATEGORY(lcListLoader, "corvell.mainwindow.list")

namespace {
using EngineNames::kConfigConsumer;
using EngineNames::kOutlookConsumer;

qint32 highestKeyNumber(const CategoryNode &node)
{
    qint32 highest = categoriesUtils::KeyNumber(node.key());
    for (int i = 0; i < node.childCount(); ++i)
        highest = std::max(highest, highestKeyNumber(*node.child(i)));
    return highest;
}

KeyedCollection deliveredCollection(quillon::SubscribeClient &client)
{
    HandleGuard list(client, client.ListConsumerItems(kOutlookConsumer, kNewsClass));
    KeyedCollection delivered;
    const qint32 count = client.ListCount(list.get());
    delivered.Reserve(count);
    for (qint32 i = 0; i < count; ++i) {
        const qint32 id = client.ListLong(list.get(), i);
        delivered.Add(QStringLiteral("SubID_") + QString::number(id), id);
    }
    return delivered;
}
} // namespace

SubscriptionListLoader::SubscriptionListLoader(quillon::SubscribeClient &client, CategoryTree &tree)
    : m_client(client), m_tree(tree)
{
}

bool SubscriptionListLoader::HasValue(const QString &text)
{
    return !text.isEmpty() && text != quillon::kMissingText;
}

QString SubscriptionListLoader::NodeText(const QString &folderTitle, const QString &title, const QString &url)
{
    if (HasValue(folderTitle))
        return folderTitle;
    return HasValue(title) ? title : url;
}

SubscriptionListLoader::Result SubscriptionListLoader::Load()
{
    Result result;
    LoadSavedCategories(result);
    PlaceSubscriptions(result);
    return result;
}

void SubscriptionListLoader::LoadSavedCategories(Result &result)
{
    const QString saved = GetConsumerSetting(m_client, categoriesUtils::kSavedCategoriesKey, QString(),
                                             kConfigConsumer, QString());
    m_tree.clear();
    if (!saved.isEmpty()) {
        if (categoriesUtils::LoadCategoryTree(m_tree, saved)) {
            KeepAside(categoriesUtils::kLastReadableCategoriesKey, saved);
        } else {
            // The nodes read before the error stay and the engine's paths add the rest; the
            // text itself is kept aside, as is the last one that read whole, so a bad name
            // never costs the user categories for good.
            KeepAside(categoriesUtils::kUnreadableCategoriesKey, saved);
            result.savedTreeDropped = true;
        }
    }
    qint32 highest = 0;
    for (int i = 0; i < m_tree.topLevelCount(); ++i)
        highest = std::max(highest, highestKeyNumber(*m_tree.topLevelNode(i)));
    categoriesUtils::AdvanceKeyCounterPast(highest);
}

void SubscriptionListLoader::KeepAside(const QString &key, const QString &text)
{
    if (GetConsumerSetting(m_client, key, QString(), kConfigConsumer, QString()) != text)
        SetConsumerSetting(m_client, kConfigConsumer, QString(), key, text);
}

void SubscriptionListLoader::PlaceSubscriptions(Result &result)
{
    const KeyedCollection delivered = deliveredCollection(m_client);
    HandleGuard all(m_client, m_client.ListConsumerItems(QStringLiteral("*"), kNewsClass));
    const qint32 count = m_client.ListCount(all.get());
    result.facts.reserve(count);
    for (qint32 i = 0; i < count; ++i) {
        HandleGuard item(m_client, m_client.GetItemBag(kNewsClass, m_client.ListLong(all.get(), i), 0));
        const qint32 id = m_client.GetLongValue(item.get(), QStringLiteral("SUBSCRIPTIONID"));
        if (id < 1 || id == quillon::kMissing)
            continue;
        const bool isDelivered =
            delivered.Item(QStringLiteral("SubId_") + QString::number(id)) != quillon::kMissing;
        CategoryNode *node =
            Place(m_tree, id, TextOf(m_client, item.get()),
                  m_client.GetStringValue(item.get(), QStringLiteral("CATEGORY")), isDelivered);
        if (!node)
            continue;
        result.lastPlaced = node;
        result.facts.insert(id, FactsOf(m_client, item.get()));
    }
}

QString SubscriptionListLoader::TextOf(quillon::SubscribeClient &client, quillon::Handle item)
{
    return NodeText(client.GetStringValue(item, QStringLiteral("FOLDERTITLE")),
                    client.GetStringValue(item, QStringLiteral("TITLE")),
                    client.GetStringValue(item, QStringLiteral("URL")));
}

SubscriptionFacts SubscriptionListLoader::FactsOf(quillon::SubscribeClient &client, quillon::Handle item)
{
    // Articles the mail delivery cannot store fail the subscription as surely as a feed that
    // cannot be fetched, and are shown the same way.
    const QString delivery = client.GetStringValue(item, QStringLiteral("DELIVERYSTATUS"));
    return {client.GetStringValue(item, QStringLiteral("URL")),
            client.GetLongValue(item, QStringLiteral("ITEMREADCOUNT")),
            client.GetLongValue(item, QStringLiteral("ITEMUNREADCOUNT")),
            HasValue(delivery)
                ? QStringLiteral("Error: the mail delivery cannot store its articles: ") + delivery
                : client.GetStringValue(item, QStringLiteral("LASTUPDATESTATUS"))};
}

CategoryNode *SubscriptionListLoader::Place(CategoryTree &tree, qint32 id, const QString &text,
                                            const QString &category, bool delivered)
{
    CategoryNode *parent = nullptr;
    if (HasValue(category)) {
        parent = categoriesUtils::FindNodeByPath(tree, category);
        if (!categoriesUtils::IsCategory(parent))
            parent = categoriesUtils::AddCategoryFromSubscription(tree, category);
        // A subscription that happens to carry the path cannot hold others: use the top.
        if (!categoriesUtils::IsCategory(parent))
            parent = nullptr;
    }
    const QString image = delivered ? QStringLiteral("checked") : QStringLiteral("unchecked");
    CategoryNode *node = tree.addNode(parent, categoriesUtils::MakeNodeKey(1), text, image);
    if (!node) {
        qCWarning(lcListLoader) << "subscription" << id << "could not be placed";
        return nullptr;
    }
    node->setTag(QString::number(id));
    if (parent)
        categoriesUtils::UpdateParentState(*parent);
    return node;
}

void SubscriptionListLoader::ReadStatus(quillon::SubscribeClient &client, qint32 id, SubscriptionFacts &facts,
                                        SubscriptionStatus &status)
{
    HandleGuard item(client, client.GetItemBag(kNewsClass, id, 0));
    facts = FactsOf(client, item.get());
    status.lastCheck = client.GetStringValue(item.get(), QStringLiteral("LastDateCheck"));
    status.nextCheck = client.GetStringValue(item.get(), QStringLiteral("NEXTUPDATETIME"));
    status.downloads = GetConsumerSetting(client, QStringLiteral("DownloadStatus"), QString(),
                                          QStringLiteral("MEDIACONSUMER"), SubscriptionSpecificsSection(id));
}
