#include "WeblogConnection.h"

#include "ConsumerSettings.h"
#include "HandleGuard.h"
#include "NetworkSettingKeys.h"

#include <QEventLoop>
#include <QLoggingCategory>
#include <QNetworkProxy>
#include <QNetworkReply>

#include <memory>

Q_LOGGING_CATEGORY(lcWeblogConnection, "corvell.publishing.connection")

namespace Keys = quillon::NetworkSettingKeys;

WeblogConnection::WeblogConnection(quillon::SubscribeClientPtr client, int timeoutMs)
    : m_client(std::move(client)), m_timeoutMs(timeoutMs)
{
    m_network.setRedirectPolicy(QNetworkRequest::NoLessSafeRedirectPolicy);
}

WeblogConnection::Answer WeblogConnection::Get(const QUrl &url, const QByteArray &authorization)
{
    return Send(QNetworkRequest(url), nullptr, authorization);
}

WeblogConnection::Answer WeblogConnection::Post(const QUrl &url, const QByteArray &body,
                                                const QByteArray &contentType,
                                                const QByteArray &authorization)
{
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader, contentType);
    return Send(request, &body, authorization);
}

// The engine decides the route, so a weblog is reached as the feeds are.
void WeblogConnection::UseRouteFor(const QUrl &url)
{
    QNetworkProxy route(QNetworkProxy::NoProxy);
    if (m_client) {
        try {
            HandleGuard answer(*m_client, m_client->ProxyForUrl(url.toString()));
            const QUrl proxy(m_client->GetStringValue(answer.get(), QStringLiteral("PROXY")));
            const QString login = m_client->GetStringValue(answer.get(), QStringLiteral("LOGIN"));
            if (!proxy.host().isEmpty())
                route = QNetworkProxy(QNetworkProxy::HttpProxy, proxy.host(), quint16(proxy.port(3128)));
            if (!proxy.host().isEmpty() && !login.isEmpty() && login != QLatin1String("(current user)")) {
                route.setUser(login);
                route.setPassword(GetConsumerSetting(*m_client, Keys::kPassword, QString(), Keys::kConsumer,
                                                     Keys::kSection));
            }
        } catch (const std::exception &e) {
            qCWarning(lcWeblogConnection) << "no route from the engine, going directly:" << e.what();
        }
    }
    m_network.setProxy(route);
}

WeblogConnection::Answer WeblogConnection::Send(QNetworkRequest request, const QByteArray *body,
                                                const QByteArray &authorization)
{
    UseRouteFor(request.url());
    if (!authorization.isEmpty())
        request.setRawHeader("Authorization", authorization);
    request.setTransferTimeout(m_timeoutMs);
    std::unique_ptr<QNetworkReply> reply(body ? m_network.post(request, *body) : m_network.get(request));
    QEventLoop wait;
    QObject::connect(reply.get(), &QNetworkReply::finished, &wait, &QEventLoop::quit);
    wait.exec(QEventLoop::ExcludeUserInputEvents);
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    Answer answer{reply->readAll(), reply->url(), QString(), status};
    if (reply->error() != QNetworkReply::NoError) {
        answer.error = status > 0
                           ? QStringLiteral("HTTP %1 %2")
                                 .arg(status)
                                 .arg(reply->attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString())
                           : reply->errorString();
    }
    return answer;
}
