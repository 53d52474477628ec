#include "SubscriptionStore.h"

#include "CoreLogging.h"
#include "EngineDatabase.h"
#include "EngineError.h"
#include "SecretVault.h"
#include "SubscriptionFields.h"

#include <QUrl>

#include <limits>
#include <optional>

namespace quillon {

namespace {
// A subscription's read and unread article counts, two columns.
const QString kArticleCounts =
    QStringLiteral(" (SELECT COUNT(*) FROM articles a WHERE a.subscription_id = s.id AND a.is_read = 1),"
                   " (SELECT COUNT(*) FROM articles a WHERE a.subscription_id = s.id AND a.is_read = 0)");
// One statement reads everything GetItemBag returns except free properties, which are only
// looked up when the last column says there are some.
// The columns of a bag, then the ID; kSelectBag reads one subscription, kSelectBags several.
const QString kBagColumns =
    QStringLiteral("SELECT s.title, s.url, s.category, s.user_name, s.password, s.update_freq, s.delete_read,"
                   " s.delete_unread, s.last_update_status, s.last_date_check, s.next_update_time,") +
    kArticleCounts +
    QStringLiteral(", (SELECT st.value FROM settings st WHERE st.consumer_id = 'OLCONSUMER'"
                   "  AND st.section = 'SubscriptionSpecifics_' || s.id AND st.key = 'FOLDERTITLE'),"
                   " (SELECT st.value FROM settings st WHERE st.consumer_id = 'OLCONSUMER'"
                   "  AND st.section = 'SubscriptionSpecifics_' || s.id AND st.key = 'DeliveryStatus'),"
                   " EXISTS (SELECT 1 FROM subscription_properties p WHERE p.subscription_id = s.id), s.id"
                   " FROM subscriptions s");
// What a consumer's list shows, read after every update.
const QString kSelectSummary = QStringLiteral("SELECT s.title, s.last_update_status,") + kArticleCounts +
                               QStringLiteral(" FROM subscriptions s WHERE s.id = ?");
const QString kSelectBag = kBagColumns + QStringLiteral(" WHERE s.id = ?");
const QString kSelectBags = kBagColumns + QStringLiteral(" WHERE s.id IN (SELECT value FROM json_each(?))");
constexpr int kPasswordColumn = 4;
constexpr int kReadCountColumn = 11;
constexpr int kFolderTitleColumn = 13;
constexpr int kDeliveryStatusColumn = 14;
constexpr int kHasFreeColumn = 15;
constexpr int kIdColumn = 16;

QString textOrEmpty(const PropertyBag &bag, const QString &name)
{
    const PropertyValue *v = bag.find(name);
    return v ? valueText(*v) : QString();
}

QVariant textOrNull(const PropertyBag &bag, const QString &name)
{
    const PropertyValue *v = bag.find(name);
    return v ? QVariant(valueText(*v)) : QVariant();
}

struct AddressLogin
{
    QString url; // without the login
    QString user;
    QString password;
};

// The login inside a web address, if it carries one.
std::optional<AddressLogin> loginIn(const QString &address)
{
    const QUrl url(address.trimmed(), QUrl::TolerantMode);
    const QString scheme = url.scheme().toLower();
    if (!url.isValid() || (scheme != QLatin1String("http") && scheme != QLatin1String("https")) ||
        (url.userName().isEmpty() && url.password().isEmpty()))
        return std::nullopt;
    return AddressLogin{url.adjusted(QUrl::RemoveUserInfo).toString(), url.userName(), url.password()};
}

// The request with its address's login moved to USER/PASSWORD.
PropertyBag withoutAddressLogin(const PropertyBag &request)
{
    PropertyBag moved = request;
    const auto login =
        request.contains(QStringLiteral("URL")) ? loginIn(request.text(QStringLiteral("URL"))) : std::nullopt;
    if (!login)
        return moved;
    moved.setText(QStringLiteral("URL"), login->url);
    if (!request.contains(QStringLiteral("USER")) || request.text(QStringLiteral("USER")).isEmpty()) {
        moved.setText(QStringLiteral("USER"), login->user);
        moved.setText(QStringLiteral("PASSWORD"), login->password);
    }
    return moved;
}
} // namespace

qint32 SubscriptionStore::create(const PropertyBag &asked, const QDateTime &now)
{
    const PropertyBag request = withoutAddressLogin(asked);
    // Title and category are always present: an empty category means the top of the tree.
    const qint64 id = m_db.insert(
        QStringLiteral("INSERT INTO subscriptions (title, url, category, user_name, password, update_freq,"
                       " delete_read, delete_unread, created_at) VALUES (?, ?, ?, ?, ?, -1, -1, -1, ?)"),
        {textOrEmpty(request, QStringLiteral("TITLE")), textOrEmpty(request, QStringLiteral("URL")).trimmed(),
         textOrEmpty(request, QStringLiteral("CATEGORY")), textOrNull(request, QStringLiteral("USER")),
         textOrNull(request, QStringLiteral("PASSWORD")), SubscriptionFields::isoDate(now)},
        "adding a subscription");
    if (id <= 0 || id > std::numeric_limits<qint32>::max())
        throw EngineError(QStringLiteral("The engine ran out of subscription IDs"));
    return qint32(id);
}

bool SubscriptionStore::exists(qint32 id)
{
    return !m_db.select(QStringLiteral("SELECT 1 FROM subscriptions WHERE id = ?"), {id},
                        "looking up a subscription")
                .isEmpty();
}

std::optional<qint32> SubscriptionStore::findByUrl(const QString &url)
{
    const auto rows = m_db.select(QStringLiteral("SELECT id FROM subscriptions WHERE url = ? LIMIT 1"), {url},
                                  "looking up a subscription by address");
    if (rows.isEmpty())
        return std::nullopt;
    return rows.constFirst().constFirst().toInt();
}

void SubscriptionStore::requireExists(qint32 id)
{
    if (!exists(id))
        throw EngineError(QStringLiteral("There is no subscription %1").arg(id));
}

QList<qint32> SubscriptionStore::allIds()
{
    QList<qint32> ids;
    for (const auto &row :
         m_db.select(QStringLiteral("SELECT id FROM subscriptions ORDER BY id"), {}, "listing subscriptions"))
        ids.append(row.value(0).toInt());
    return ids;
}

BagPtr SubscriptionStore::itemBag(qint32 id)
{
    std::optional<BagPtr> bag = findItemBag(id);
    if (!bag)
        throw EngineError(QStringLiteral("There is no subscription %1").arg(id));
    return std::move(*bag);
}

std::optional<BagPtr> SubscriptionStore::findItemBag(qint32 id)
{
    const auto rows = m_db.select(kSelectBag, {id}, "reading a subscription");
    if (rows.isEmpty())
        return std::nullopt;
    return bagFromRow(rows.first());
}

std::optional<SubscriptionStore::Summary> SubscriptionStore::summary(qint32 id)
{
    // Four values of the bag, without building it.
    const auto rows = m_db.select(kSelectSummary, {id}, "reading a subscription's summary");
    if (rows.isEmpty())
        return std::nullopt;
    const auto &row = rows.first();
    return Summary{row.at(0).toString(), row.at(1).toString(), row.at(2).toInt(), row.at(3).toInt()};
}

QHash<qint32, BagPtr> SubscriptionStore::itemBags(const QList<qint32> &ids)
{
    QStringList texts;
    texts.reserve(ids.size());
    for (const qint32 id : ids)
        texts.append(QString::number(id));
    // One statement for all: JSON numbers, read by json_each.
    const auto rows =
        m_db.select(kSelectBags, {QLatin1Char('[') + texts.join(QLatin1Char(',')) + QLatin1Char(']')},
                    "reading subscriptions");
    QHash<qint32, BagPtr> bags;
    bags.reserve(rows.size());
    for (const auto &row : rows)
        bags.insert(row.at(kIdColumn).toInt(), bagFromRow(row));
    return bags;
}

BagPtr SubscriptionStore::bagFromRow(const EngineDatabase::Row &row)
{
    const qint32 id = row.at(kIdColumn).toInt();
    auto bag = PropertyBag::create();
    bag->setLong(QStringLiteral("SUBSCRIPTIONID"), id);
    const auto &fields = SubscriptionFields::all();
    for (int i = 0; i < fields.size(); ++i) {
        if (!row.at(i).isNull())
            bag->set(fields.at(i).name, SubscriptionFields::fromColumn(row.at(i)));
    }
    if (!row.at(kPasswordColumn).isNull())
        bag->setText(QStringLiteral("PASSWORD"), password(id, row.at(kPasswordColumn)));
    bag->setLong(QStringLiteral("ITEMREADCOUNT"), row.at(kReadCountColumn).toInt());
    bag->setLong(QStringLiteral("ITEMUNREADCOUNT"), row.at(kReadCountColumn + 1).toInt());
    if (row.at(kHasFreeColumn).toBool())
        appendFreeProperties(id, *bag);
    if (!row.at(kFolderTitleColumn).isNull())
        bag->setText(QStringLiteral("FOLDERTITLE"), row.at(kFolderTitleColumn).toString());
    if (!row.at(kDeliveryStatusColumn).isNull())
        bag->setText(QStringLiteral("DELIVERYSTATUS"), row.at(kDeliveryStatusColumn).toString());
    return bag;
}

QString SubscriptionStore::password(qint64 id, const QVariant &stored) const
{
    const QString text = stored.toString();
    return m_vault ? m_vault->reveal(text, SecretVault::subscriptionName(id)) : text;
}

void SubscriptionStore::appendFreeProperties(qint32 id, PropertyBag &bag)
{
    const auto rows = m_db.select(
        QStringLiteral(
            "SELECT name, value FROM subscription_properties WHERE subscription_id = ? ORDER BY rowid"),
        {id}, "reading subscription properties");
    for (const auto &row : rows)
        bag.set(row.at(0).toString(), SubscriptionFields::fromColumn(row.at(1)));
}

void SubscriptionStore::moveLoginsOutOfAddresses()
{
    const auto rows = m_db.select(
        QStringLiteral(
            "SELECT id, url, COALESCE(user_name, '') FROM subscriptions WHERE instr(url, '@') > 0"),
        {}, "looking for logins in addresses");
    for (const auto &row : rows) {
        const auto login = loginIn(row.at(1).toString());
        if (!login)
            continue;
        m_db.execute(QStringLiteral("UPDATE subscriptions SET url = ? WHERE id = ?"), {login->url, row.at(0)},
                     "moving a login out of an address");
        if (row.at(2).toString().isEmpty())
            m_db.execute(QStringLiteral("UPDATE subscriptions SET user_name = ?, password = ? WHERE id = ?"),
                         {login->user, login->password, row.at(0)}, "moving a login out of an address");
    }
}

void SubscriptionStore::update(qint32 id, const PropertyBag &asked, const QDateTime &now)
{
    const PropertyBag values = withoutAddressLogin(asked);
    requireExists(id);
    // Due now first, so that a NEXTUPDATETIME in the bag still wins.
    setProperty(id, QStringLiteral("NEXTUPDATETIME"), SubscriptionFields::isoDate(now));
    for (const auto &[name, value] : values.entries()) {
        if (SubscriptionFields::isReadOnly(name)) {
            qCDebug(lcCore) << "ignoring computed property" << name << "for subscription" << id;
            continue;
        }
        setProperty(id, name, value);
    }
    // Validators of the old address mean nothing to the new one.
    if (values.contains(QStringLiteral("URL")))
        m_db.execute(
            QStringLiteral("UPDATE subscriptions SET etag = NULL, last_modified = NULL WHERE id = ?"), {id},
            "forgetting a feed's validators");
}

void SubscriptionStore::setProperty(qint32 id, const QString &name, const PropertyValue &value)
{
    if (const auto *field = SubscriptionFields::find(name)) {
        // The column name comes from the fixed field table, never from the caller.
        m_db.execute(QStringLiteral("UPDATE subscriptions SET %1 = ? WHERE id = ?").arg(field->column),
                     {SubscriptionFields::toColumn(*field, value), id}, "updating a subscription");
        return;
    }
    const QVariant stored = SubscriptionFields::toFreeValue(name, value);
    if (stored.isNull()) {
        m_db.execute(
            QStringLiteral("DELETE FROM subscription_properties WHERE subscription_id = ? AND name = ?"),
            {id, name}, "clearing a subscription property");
        return;
    }
    m_db.execute(
        QStringLiteral("INSERT INTO subscription_properties (subscription_id, name, value) VALUES (?, ?, ?)"
                       " ON CONFLICT (subscription_id, name) DO UPDATE SET value = excluded.value"),
        {id, name, stored}, "storing a subscription property");
}

void SubscriptionStore::moveToFeed(qint32 id, const QString &url)
{
    m_db.execute(QStringLiteral("UPDATE subscriptions SET url = ? WHERE id = ?"), {url, id},
                 "moving a subscription to the feed its page links to");
}

bool SubscriptionStore::remove(qint32 id)
{
    return m_db.execute(QStringLiteral("DELETE FROM subscriptions WHERE id = ?"), {id},
                        "removing a subscription") > 0;
}

std::optional<SubscriptionStore::FetchInfo> SubscriptionStore::fetchInfo(qint32 id)
{
    const auto rows = m_db.select(
        QStringLiteral(
            "SELECT url, title, user_name, password, etag, last_modified, update_freq, delete_read,"
            " delete_unread FROM subscriptions WHERE id = ?"),
        {id}, "reading what a fetch needs");
    if (rows.isEmpty())
        return std::nullopt;
    const auto &row = rows.first();
    const auto number = [&row](int column) { return row.at(column).isNull() ? -1 : row.at(column).toInt(); };
    return FetchInfo{row.at(0).toString(),
                     row.at(1).toString(),
                     row.at(2).toString(),
                     password(id, row.at(3)),
                     row.at(4).toString(),
                     row.at(5).toString(),
                     number(6),
                     number(7),
                     number(8)};
}

QList<SubscriptionStore::Due> SubscriptionStore::dueForUpdate(const QDateTime &now)
{
    QList<Due> due;
    const auto rows = m_db.select(
        QStringLiteral(
            "SELECT id, update_freq FROM subscriptions"
            " WHERE next_update_time IS NULL OR next_update_time <= ? ORDER BY next_update_time, id"),
        {SubscriptionFields::isoDate(now)}, "finding subscriptions due");
    due.reserve(rows.size());
    for (const auto &row : rows)
        due.append({row.at(0).toInt(), row.at(1).isNull() ? -1 : row.at(1).toInt()});
    return due;
}

void SubscriptionStore::setNextUpdate(qint32 id, const QDateTime &when)
{
    m_db.execute(QStringLiteral("UPDATE subscriptions SET next_update_time = ? WHERE id = ?"),
                 {SubscriptionFields::isoDate(when), id}, "scheduling a subscription");
}

int SubscriptionStore::rescheduleOnDefault(qint32 seconds)
{
    return m_db.execute(
        QStringLiteral("UPDATE subscriptions SET next_update_time ="
                       " strftime('%Y-%m-%dT%H:%M:%SZ', last_date_check, ? || ' seconds')"
                       " WHERE (update_freq IS NULL OR update_freq <= 0) AND last_date_check <> ''"),
        {QStringLiteral("%1%2").arg(seconds < 0 ? "" : "+").arg(seconds)}, "moving the default schedule");
}

QDateTime SubscriptionStore::earliestNextUpdate()
{
    const auto rows = m_db.select(QStringLiteral("SELECT MIN(next_update_time) FROM subscriptions"), {},
                                  "finding the next update");
    if (rows.isEmpty() || rows.first().at(0).isNull())
        return {};
    return QDateTime::fromString(rows.first().at(0).toString(), Qt::ISODate);
}

bool SubscriptionStore::recordFetch(qint32 id, const FetchRecord &record)
{
    // One statement: every update records its fetch, and each write of the row costs alike.
    const auto orNull = [](const QString &text) { return text.isEmpty() ? QVariant() : QVariant(text); };
    return m_db.execute(QStringLiteral("UPDATE subscriptions SET last_update_status = ?1,"
                                       " last_date_check = ?2, next_update_time = ?3,"
                                       " etag = iif(?4, ?5, etag), last_modified = iif(?4, ?6, last_modified)"
                                       " WHERE id = ?7"),
                        {record.status, SubscriptionFields::isoDate(record.checkedAt),
                         SubscriptionFields::isoDate(record.nextUpdate), record.setValidators,
                         orNull(record.etag), orNull(record.lastModified), id},
                        "recording a fetch") > 0;
}

void SubscriptionStore::fillTitle(qint32 id, const QString &title)
{
    if (title.trimmed().isEmpty())
        return;
    m_db.execute(QStringLiteral("UPDATE subscriptions SET title = ? WHERE id = ?"
                                " AND (title IS NULL OR TRIM(title) = '' OR TRIM(title) = TRIM(url))"),
                 {title.trimmed(), id}, "taking the feed's title");
}

} // namespace quillon
