#pragma once

#include "PropertyBag.h"
#include "SubscribeClient.h"

#include <QHash>
#include <QString>

class CategoryNode;
class CategoryTree;

// What the window keeps of a subscription between loads besides its node: the address for the
// grid, the article counts the tree and the category panel add up, and the last fetch result
// that marks a failing feed.
struct SubscriptionFacts
{
    QString url;
    qint32 readCount = quillon::kMissing;
    qint32 unreadCount = quillon::kMissing;
    QString lastStatus = quillon::kMissingText;
};

// What the details pane shows beside the facts, as the engine gives it.
struct SubscriptionStatus
{
    QString lastCheck = quillon::kMissingText;
    QString nextCheck = quillon::kMissingText;
    QString downloads; // the media downloader's progress, "" when nothing comes in
};

// Builds the tree of categories and subscriptions from the saved categories and the engine.
// One GetItemBag per subscription; every other step is a hash or sorted-insert lookup.
class SubscriptionListLoader
{
public:
    struct Result
    {
        CategoryNode *lastPlaced = nullptr;
        QHash<qint32, SubscriptionFacts> facts;
        // The saved categories could not be read whole: what was read before the error stays,
        // the text is kept aside, and the tree should be saved again.
        bool savedTreeDropped = false;
    };

    SubscriptionListLoader(quillon::SubscribeClient &client, CategoryTree &tree);

    // Clears the tree and fills it. Throws quillon::EngineError when the engine fails.
    Result Load();

    // Adds a subscription node under the category of the path (made where missing), checked
    // when it is delivered to Outlook. Null when it cannot be added.
    static CategoryNode *Place(CategoryTree &tree, qint32 id, const QString &text, const QString &category,
                               bool delivered);
    // The Outlook folder title when there is one, else the title, else the address.
    [[nodiscard]] static QString NodeText(const QString &folderTitle, const QString &title,
                                          const QString &url);
    // The node text and the facts of a subscription's bag.
    [[nodiscard]] static QString TextOf(quillon::SubscribeClient &client, quillon::Handle item);
    [[nodiscard]] static SubscriptionFacts FactsOf(quillon::SubscribeClient &client, quillon::Handle item);
    [[nodiscard]] static bool HasValue(const QString &text);
    // Reads the subscription's status and brings its facts up to date; what was read before
    // a failure stays. Throws quillon::EngineError.
    static void ReadStatus(quillon::SubscribeClient &client, qint32 id, SubscriptionFacts &facts,
                           SubscriptionStatus &status);

private:
    void LoadSavedCategories(Result &result);
    void PlaceSubscriptions(Result &result);
    void KeepAside(const QString &key, const QString &text);

    quillon::SubscribeClient &m_client;
    CategoryTree &m_tree;
};
