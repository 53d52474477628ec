#pragma once

#include "PropertyBag.h"

#include <QDateTime>
#include <QHash>
#include <QList>

#include <optional>

namespace quillon {

class EngineDatabase;
class SecretVault;

// The "NEWS" subscriptions: their own columns, free properties and article counts.
class SubscriptionStore
{
public:
    // What fetching a subscription needs; integers are -1 when unset.
    struct FetchInfo
    {
        QString url;
        QString title;
        QString user;
        QString password;
        QString etag;
        QString lastModified;
        qint32 updateFreq = -1;
        qint32 deleteRead = -1;
        qint32 deleteUnread = -1;
    };
    struct Due
    {
        qint32 id = 0;
        qint32 updateFreq = -1;
    };
    // The outcome of one fetch. Validators are replaced only when setValidators is true.
    struct FetchRecord
    {
        QString status;
        QDateTime checkedAt;
        QDateTime nextUpdate;
        bool setValidators = false;
        QString etag;
        QString lastModified;
    };

    explicit SubscriptionStore(EngineDatabase &db) : m_db(db) {}
    // Where passwords moved out of the database are read back.
    void setVault(const SecretVault *vault) { m_vault = vault; }

    // Takes TITLE, URL, CATEGORY, USER and PASSWORD from an add request; returns the new ID.
    qint32 create(const PropertyBag &request, const QDateTime &now);
    // Addresses that carry a login ("https://ann:pw@host/feed") lose it to USER/PASSWORD
    // (kept when those are already set), so no password shows wherever an address is shown.
    void moveLoginsOutOfAddresses();
    [[nodiscard]] bool exists(qint32 id);
    // The subscription to this address, if there is one.
    [[nodiscard]] std::optional<qint32> findByUrl(const QString &url);
    // Throws EngineError naming the ID when there is no such subscription.
    void requireExists(qint32 id);
    [[nodiscard]] QList<qint32> allIds();
    // Every value that is known; absent ones are left out. Throws for an unknown ID.
    [[nodiscard]] BagPtr itemBag(qint32 id);
    // The same, or nothing for an unknown ID.
    [[nodiscard]] std::optional<BagPtr> findItemBag(qint32 id);
    // What a consumer's list shows of a subscription; nothing when it is gone.
    struct Summary
    {
        QString title;
        QString status;
        qint32 read = 0;
        qint32 unread = 0;
        bool operator==(const Summary &) const = default;
    };
    [[nodiscard]] std::optional<Summary> summary(qint32 id);
    // The bags of those IDs that name a subscription, in one statement.
    [[nodiscard]] QHash<qint32, BagPtr> itemBags(const QList<qint32> &ids);
    // Applies each name of the bag and makes the subscription due at once.
    void update(qint32 id, const PropertyBag &values, const QDateTime &now);
    // Articles, bindings and free properties go with it. Returns false when it did not exist.
    bool remove(qint32 id);

    [[nodiscard]] std::optional<FetchInfo> fetchInfo(qint32 id);
    // Never fetched, or NEXTUPDATETIME reached; the longest waiting first.
    [[nodiscard]] QList<Due> dueForUpdate(const QDateTime &now);
    void setNextUpdate(qint32 id, const QDateTime &when);
    // The engine's frequency changed: subscriptions on it (-1 or 0) that were fetched are next
    // due their last check plus seconds. Returns how many moved.
    int rescheduleOnDefault(qint32 seconds);
    // Invalid when no subscription has a next update time.
    [[nodiscard]] QDateTime earliestNextUpdate();
    // False when the subscription is gone.
    bool recordFetch(qint32 id, const FetchRecord &record);
    // Takes the feed's title when the user gave none (empty, or the address itself).
    void fillTitle(qint32 id, const QString &title);
    // The feed found behind the web page the user subscribed to becomes the address.
    void moveToFeed(qint32 id, const QString &url);

private:
    void setProperty(qint32 id, const QString &name, const PropertyValue &value);
    void appendFreeProperties(qint32 id, PropertyBag &bag);
    [[nodiscard]] BagPtr bagFromRow(const QVariantList &row);

    [[nodiscard]] QString password(qint64 id, const QVariant &stored) const;

    EngineDatabase &m_db;
    const SecretVault *m_vault = nullptr;
};

} // namespace quillon
