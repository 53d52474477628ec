#pragma once

#include "FetchOptions.h"
#include "FetchRequest.h"
#include "FetchResult.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

class QNetworkAccessManager;
class QNetworkReply;

namespace quillon {

// One web fetch: follows redirects itself (so a login never travels to another origin), holds
// the deadline and the size limit, and reports once with finished().
class HttpFetchJob : public QObject
{
    Q_OBJECT
public:
    HttpFetchJob(QNetworkAccessManager &network, const FetchOptions &options, FetchRequest request);
    ~HttpFetchJob() override;

    void start();
    // Scheme, host and port: the connections QNetworkAccessManager would share.
    [[nodiscard]] const QString &hostKey() const { return m_hostKey; }

Q_SIGNALS:
    void finished(quillon::HttpFetchJob *job, const quillon::FetchResult &result);

private:
    void send(const QUrl &url);
    void readBody();
    void checkAnnouncedSize();
    [[nodiscard]] bool isPacked() const;
    void onReplyFinished();
    [[nodiscard]] bool followRedirect(int status);
    [[nodiscard]] FetchResult answered(int status) const;
    void finish(const FetchResult &result);
    void fail(FetchResult::Outcome outcome, const QString &reason, int status = 0);
    void dropReply();

    QNetworkAccessManager &m_network;
    const FetchOptions &m_options;
    FetchRequest m_request;
    QPointer<QNetworkReply> m_reply;
    QTimer m_deadline;
    QUrl m_current;
    QString m_hostKey;
    QByteArray m_body;
    int m_redirects = 0;
    bool m_reported = false;
};

} // namespace quillon
