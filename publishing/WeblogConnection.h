#pragma once

#include "SubscribeClient.h"

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QString>
#include <QUrl>

// Requests to weblog servers through Qt networking, each sent the way the engine would send
// it: directly, or through the proxy of the network page with its login. A request waits for
// its answer, keeping the event loop running.
class WeblogConnection
{
public:
    struct Answer
    {
        QByteArray body;
        QUrl url; // where the answer came from, after redirects
        // Empty when the server answered with success.
        QString error;
        int status = 0; // the HTTP status; 0 when no server answered
    };

    // client may be null: then every request goes directly.
    explicit WeblogConnection(quillon::SubscribeClientPtr client, int timeoutMs = 30000);

    // authorization: the header's value, for this request only.
    [[nodiscard]] Answer Get(const QUrl &url, const QByteArray &authorization = {});
    [[nodiscard]] Answer Post(const QUrl &url, const QByteArray &body, const QByteArray &contentType,
                              const QByteArray &authorization = {});

private:
    [[nodiscard]] Answer Send(QNetworkRequest request, const QByteArray *body,
                              const QByteArray &authorization);
    void UseRouteFor(const QUrl &url);

    quillon::SubscribeClientPtr m_client;
    QNetworkAccessManager m_network;
    int m_timeoutMs;
};
