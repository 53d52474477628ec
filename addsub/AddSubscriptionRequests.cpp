#include "AddSubscriptionRequests.h"

#include "CBNamedAnswer.h"
#include "CBRootOPML.h"
#include "CBSubOPML.h"
#include "ConsumerSettings.h"
#include "EngineNames.h"
#include "HandleGuard.h"
#include "HandlerNames.h"
#include "PropertyBag.h"

using EngineNames::kNewsClass;
using quillon::Handle;

namespace {
// Where the engine keeps the directory it ships, when the setting was never written.
const QString kShippedDirectory = QStringLiteral("quillon-data:directory/root.opml");
} // namespace

AddSubscriptionRequests::AddSubscriptionRequests(quillon::SubscribeClientPtr client)
    : m_client(std::move(client))
{
}

void AddSubscriptionRequests::RequestRootList(QObject *target)
{
    const QString url = GetConsumerSetting(*m_client, QStringLiteral("OEM_Browse_URL"), kShippedDirectory,
                                           QStringLiteral("ENGINE"), QString());
    auto callback = std::make_shared<CBRootOPML>();
    callback->Setup(target);
    HandleGuard request(*m_client, m_client->NewBag());
    m_client->SetStringValue(request.get(), QStringLiteral("REQUEST"), QStringLiteral("FETCHOPML"));
    m_client->SetStringValue(request.get(), QStringLiteral("CLASS"), kNewsClass);
    m_client->SetStringValue(request.get(), QStringLiteral("URL"), url);
    m_client->SubmitRequest(request.get(), callback);
}

void AddSubscriptionRequests::RequestOutlineList(QObject *target, qint32 tag, const QString &address)
{
    auto callback = std::make_shared<CBSubOPML>();
    callback->Setup(target, tag);
    HandleGuard request(*m_client, m_client->NewBag());
    m_client->SetStringValue(request.get(), QStringLiteral("REQUEST"), QStringLiteral("FETCHOPML"));
    m_client->SetStringValue(request.get(), QStringLiteral("CLASS"), kNewsClass);
    m_client->SetStringValue(request.get(), QStringLiteral("URL"), address);
    m_client->SubmitRequest(request.get(), callback);
}

void AddSubscriptionRequests::SubmitList(QObject *target, const QString &list, const char *handler)
{
    auto callback = std::make_shared<CBNamedAnswer>(handler);
    callback->Setup(target);
    HandleGuard request(*m_client, m_client->NewBag());
    m_client->SetStringValue(request.get(), QStringLiteral("REQUEST"), QStringLiteral("LIST"));
    m_client->SetStringValue(request.get(), QStringLiteral("LIST"), list);
    m_client->SubmitRequest(request.get(), callback);
}

void AddSubscriptionRequests::RequestSearchSources(QObject *target)
{
    SubmitList(target, QStringLiteral("SEARCHSOURCES"), HandlerNames::EventSearchSourcesCallback);
}

void AddSubscriptionRequests::RequestImportSources(QObject *target)
{
    SubmitList(target, QStringLiteral("IMPORT"), HandlerNames::EventImportSourcesCallback);
}

QList<std::pair<QString, QString>> AddSubscriptionRequests::ReadRootRows(Handle result) const
{
    QList<std::pair<QString, QString>> rows;
    HandleGuard list(*m_client, m_client->GetHandleValue(result, QStringLiteral("SubscriptionList")));
    for (qint32 i = 0, n = list.isValid() ? m_client->ListCount(list.get()) : 0; i < n; ++i) {
        HandleGuard node(*m_client, m_client->ListHandle(list.get(), i));
        const auto text = [&](const char *name, const QString &fallback) {
            const QString value = m_client->GetStringValue(node.get(), QLatin1String(name));
            return value == quillon::kMissingText ? fallback : value;
        };
        rows.append({text("title", text("text", QString())), text("xmlUrl", text("url", QString()))});
    }
    return rows;
}

QList<SearchSource> AddSubscriptionRequests::ReadSearchSources(Handle answer) const
{
    return ::ReadSearchSources(*m_client, answer);
}

QList<ImportTab::Source> AddSubscriptionRequests::ReadImportSources(Handle answer) const
{
    QList<ImportTab::Source> sources;
    HandleGuard result(*m_client, m_client->GetHandleValue(answer, QStringLiteral("Result")));
    HandleGuard list(*m_client, result.isValid()
                                    ? m_client->GetHandleValue(result.get(), QStringLiteral("IMPORT"))
                                    : Handle(0));
    for (qint32 i = 0, n = list.isValid() ? m_client->ListCount(list.get()) : 0; i < n; ++i) {
        HandleGuard bag(*m_client, m_client->ListHandle(list.get(), i));
        const QString id = m_client->GetStringValue(bag.get(), QStringLiteral("id"));
        QString title = m_client->GetStringValue(bag.get(), QStringLiteral("title"));
        if (title == quillon::kMissingText)
            title = id;
        const bool available = m_client->GetLongValue(bag.get(), QStringLiteral("available")) == 1;
        // The two readers of the import tab are always offered; others only where they are found.
        if (available || id == QLatin1String("newsgator") || id == QLatin1String("intravnews"))
            sources << ImportTab::Source{id, title, available};
    }
    return sources;
}

QString AddSubscriptionRequests::SearchUrl(const SearchSource &source, const QString &words,
                                           bool limitChecked, const QString &limitText) const
{
    if (source.guid == quillon::kMissingText || words.isEmpty())
        return QString();
    const QString limit = limitChecked ? limitText : source.defaultLimit;
    HandleGuard bag(*m_client, m_client->NewBag());
    m_client->SetStringValue(bag.get(), QStringLiteral("guid"), source.guid);
    m_client->SetStringValue(bag.get(), QStringLiteral("keywords"), words);
    // A source without a limit of its own leaves the number to the engine.
    if (!limit.trimmed().isEmpty() && limit != quillon::kMissingText)
        m_client->SetStringValue(bag.get(), QStringLiteral("limit"), limit.trimmed());
    return m_client->BagToText(bag.get());
}

const QHash<QString, qint32> &AddSubscriptionRequests::Subscribed()
{
    if (m_subscribed)
        return *m_subscribed;
    m_subscribed.emplace();
    HandleGuard ids(*m_client, m_client->ListConsumerItems(QStringLiteral("*"), kNewsClass));
    for (qint32 i = 0, n = m_client->ListCount(ids.get()); i < n; ++i) {
        const qint32 id = m_client->ListLong(ids.get(), i);
        if (id < 1 || id == quillon::kMissing)
            continue;
        HandleGuard bag(*m_client, m_client->GetItemBag(kNewsClass, id, 0));
        if (bag.isValid())
            m_subscribed->insert(m_client->GetStringValue(bag.get(), QStringLiteral("URL")), id);
    }
    return *m_subscribed;
}

QString AddSubscriptionRequests::LoopbackUrl(const QString &path)
{
    QString url = path;
    url.replace(QLatin1Char('\\'), QLatin1Char('/')).replace(QLatin1Char(' '), QStringLiteral("%20"));
    return QStringLiteral("file://loopback/") + url;
}
