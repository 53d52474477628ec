#include "DeliverySettings.h"

#include "HandleGuard.h"
#include "ItemClass.h"
#include "PropertyBag.h"
#include "RemoteContent.h"

#include <optional>

using quillon::Handle;

namespace {
bool textIsTrue(const QString &text)
{
    static const QStringList yes = {QStringLiteral("True"), QStringLiteral("1"),   QStringLiteral("true"),
                                    QStringLiteral("TRUE"), QStringLiteral("YES"), QStringLiteral("yes")};
    return yes.contains(text);
}
} // namespace

QStringList DeliverySettings::read(const QString &section, const QList<QPair<QString, QString>> &keys)
{
    HandleGuard bag(m_client, m_client.NewBag());
    for (const auto &[key, fallback] : keys)
        m_client.SetStringValue(bag.get(), key, fallback);
    HandleGuard values(m_client, m_client.GetSettings(kConsumer, section, bag.get()));
    QStringList result;
    for (const auto &key : keys)
        result.append(m_client.GetStringValue(values.get(), key.first));
    return result;
}

FolderDefaults DeliverySettings::defaults()
{
    const QStringList v = read(QStringLiteral("OutlookDefaults"),
                               {{QStringLiteral("TopFolderTitle"), QString()},
                                {QStringLiteral("RadioSubPlacement"), QStringLiteral("0")},
                                {QStringLiteral("SubFolderTitle"), QString()},
                                {QStringLiteral("Article_Theme"), QStringLiteral("Default")},
                                {QStringLiteral("SubMovedInConfig"), QStringLiteral("0")},
                                {QStringLiteral("SubDeletedInConfig"), QStringLiteral("2")},
                                {QStringLiteral("SubMovedInOutlook"), QStringLiteral("0")},
                                {QStringLiteral("SubDeletedInOutlook"), QStringLiteral("0")}});
    FolderDefaults d;
    d.topFolder = v.at(0);
    // The first run stores "2" for "a named folder in the existing store"; the page "1".
    d.subFolder = textIsTrue(v.at(1)) || v.at(1) == QLatin1String("2");
    d.subFolderTitle = v.at(2);
    d.theme = v.at(3);
    d.movedInConfig = v.at(4).toInt();
    d.deletedInConfig = v.at(5).toInt();
    d.movedInMailer = v.at(6).toInt();
    d.deletedInMailer = v.at(7).toInt();
    return d;
}

std::optional<SubscriptionPlace> DeliverySettings::place(qint32 subscriptionId)
{
    SubscriptionPlace p;
    p.id = subscriptionId;
    try {
        HandleGuard bag(m_client, m_client.GetItemBag(quillon::kNewsClass, subscriptionId, 0));
        p.title = m_client.GetStringValue(bag.get(), QStringLiteral("TITLE"));
        p.url = m_client.GetStringValue(bag.get(), QStringLiteral("URL"));
        p.category = m_client.GetStringValue(bag.get(), QStringLiteral("CATEGORY"));
        p.folderTitle = m_client.GetStringValue(bag.get(), QStringLiteral("FOLDERTITLE"));
    } catch (const quillon::EngineError &) {
        return std::nullopt; // an unknown subscription fails GetItemBag
    }
    const QStringList v = read(QStringLiteral("SubscriptionSpecifics_%1").arg(subscriptionId),
                               {{QStringLiteral("StoreLocationOption"), QStringLiteral("0")},
                                {QStringLiteral("StoreLocationSpecificFolder"), QString()},
                                {QStringLiteral("StoreInNamedFolder"), QStringLiteral("1")},
                                {QStringLiteral("Article_Theme"), QStringLiteral("Default")}});
    p.specificFolder = v.at(0) == QLatin1String("1");
    p.specificPath = v.at(1);
    p.namedFolder = textIsTrue(v.at(2));
    p.theme = v.at(3);
    if (!quillon::presentText(p.url).isEmpty())
        p.showImages =
            textIsTrue(read(quillon::RemoteContent::kSection, {{p.url, QStringLiteral("0")}}).value(0));
    return p;
}

QList<qint32> DeliverySettings::boundSubscriptions()
{
    HandleGuard list(m_client, m_client.ListConsumerItems(kConsumer, quillon::kNewsClass));
    QList<qint32> ids;
    for (qint32 i = 0, n = m_client.ListCount(list.get()); i < n; ++i) {
        const qint32 id = m_client.ListLong(list.get(), i);
        if (id > 0 && id != quillon::kMissing)
            ids.append(id);
    }
    return ids;
}

void DeliverySettings::store(const QString &section, const QList<QPair<QString, QString>> &values)
{
    HandleGuard bag(m_client, m_client.NewBag());
    for (const auto &[key, value] : values)
        m_client.SetStringValue(bag.get(), key, value);
    m_client.SetSettings(kConsumer, section, bag.get());
}
