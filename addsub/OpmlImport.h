#pragma once

#include "SubscribeClient.h"

#include <QObject>
#include <QPointer>
#include <QString>

// The main window's ways to bring in an OPML file outside the wizard's own tab.
namespace OpmlImport {

// A readable OPML document that names at least one feed (an outline with xmlUrl).
[[nodiscard]] bool IsValidOPMLFile(const QString &path);
// "No RSS feed information found in this file.  Please try again with a different file."
void ShowNoFeedsFound(QWidget *owner);
// The starter feeds shipped in the data folder.
[[nodiscard]] QString DefaultFeedsPath();
// Subscribes every feed of the starter list, each under its folders' path, answered at host.
// The engine's "OEM_Starter_URL" names another list (an address or a file) when it is set.
// A missing list is written to the log and nothing is asked of the engine.
void AddDefaultFeeds(QObject *host, const quillon::SubscribeClientPtr &client);

} // namespace OpmlImport

// Receives the engine's reading of the starter list and queues its feeds; lives for one answer.
class DefaultFeedsRequest : public QObject
{
    Q_OBJECT
public:
    DefaultFeedsRequest(QObject *host, quillon::SubscribeClientPtr client);
    Q_INVOKABLE void EventSubOPMLCallback(qint32 tag, qint32 answer);

private:
    QPointer<QObject> m_host;
    quillon::SubscribeClientPtr m_client;
};
