#include "OpmlImport.h"

#include "AddRequestQueue.h"
#include "AddSubscriptionRequests.h"
#include "CLog.h"
#include "ConsumerSettings.h"
#include "FeedListModel.h"
#include "HandleGuard.h"
#include "OutlineWalk.h"
#include "PendingActions.h"
#include "PropertyBag.h"
#include "StandardDialogs.h"
#include "localization.h"

#include <QDir>
#include <QFile>
#include <QXmlStreamReader>

namespace OpmlImport {

bool IsValidOPMLFile(const QString &path)
{
    QFile file(path);
    if (path.isEmpty() || !file.open(QIODevice::ReadOnly))
        return false;
    QXmlStreamReader xml(&file);
    bool opml = false;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (!opml) {
            if (xml.name().compare(QLatin1String("opml"), Qt::CaseInsensitive) != 0)
                return false;
            opml = true;
        } else if (xml.name().compare(QLatin1String("outline"), Qt::CaseInsensitive) == 0 &&
                   !xml.attributes().value(QLatin1String("xmlUrl")).trimmed().isEmpty()) {
            return true;
        }
    }
    return false;
}

void ShowNoFeedsFound(QWidget *owner)
{
    ShowAlert(owner,
              QStringLiteral(
                  "No RSS feed information found in this file.  Please try again with a different file."),
              QString());
}

QString DefaultFeedsPath()
{
    return QDir(QuillonDataFolder()).filePath(QStringLiteral("starterfeeds.opml"));
}

void AddDefaultFeeds(QObject *host, const quillon::SubscribeClientPtr &client)
{
    QString address = GetConsumerSetting(*client, QStringLiteral("OEM_Starter_URL"), quillon::kMissingText,
                                         QStringLiteral("ENGINE"), QString());
    if (address == quillon::kMissingText || address.trimmed().isEmpty()) {
        const QString path = DefaultFeedsPath();
        if (!QFile::exists(path)) {
            CLog::SaveMessage(QStringLiteral("ERROR: Failed to find default subscriptions file at:\n") +
                              path);
            return;
        }
        address = path;
    }
    // A web address is fetched as it is; anything else names a file.
    if (!address.contains(QLatin1String("://")))
        address = AddSubscriptionRequests::LoopbackUrl(address);
    auto *request = new DefaultFeedsRequest(host, client);
    AddSubscriptionRequests(client).RequestOutlineList(request, 0, address);
}

} // namespace OpmlImport

DefaultFeedsRequest::DefaultFeedsRequest(QObject *host, quillon::SubscribeClientPtr client)
    : QObject(host), m_host(host), m_client(std::move(client))
{
}

void DefaultFeedsRequest::EventSubOPMLCallback(qint32, qint32 answer)
{
    deleteLater();
    HandleGuard result(*m_client, m_client->GetHandleValue(answer, QStringLiteral("Result")));
    HandleGuard nodes(*m_client, result.isValid() ? m_client->GetHandleValue(
                                                        result.get(), QStringLiteral("SubscriptionList"))
                                                  : quillon::Handle(0));
    if (!nodes.isValid()) {
        CLog::SaveMessage(QStringLiteral("ERROR: Failed to read the default subscriptions file"),
                          m_client->GetStringValue(answer, QStringLiteral("ERROR")));
        return;
    }
    // The same walk as the wizard's lists, so a starter feed lands where an import would put it.
    FeedListModel feeds;
    const QHash<QString, qint32> none;
    OutlineWalk(*m_client, feeds, 4, none).Walk(nodes.get(), 0);
    QList<AddRequestQueue::Request> adds;
    for (const QModelIndex &row : feeds.FeedRows())
        adds.append({feeds.TitleOf(row), feeds.UrlOf(row),
                     PendingActions::CategoryFor(QStringLiteral("Automatic"), feeds.FoldersAbove(row))});
    AddRequestQueue::Instance().Enqueue(m_host, m_client, adds);
}
