// WordPress's REST interface, the second way into a weblog: the account's login is an
// application password, sent with every request.
#include "WeblogApi.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QUrlQuery>

Q_DECLARE_LOGGING_CATEGORY(lcWeblogApi)

namespace {
// A route under the interface's root, which is either a path ("/wp-json/") or, on a weblog
// without pretty addresses, the query "?rest_route=/".
QUrl RouteAddress(const QUrl &root, const QString &route)
{
    QUrlQuery query(root);
    if (query.hasQueryItem(QStringLiteral("rest_route"))) {
        query.removeAllQueryItems(QStringLiteral("rest_route"));
        query.addQueryItem(QStringLiteral("rest_route"), QLatin1Char('/') + route);
        QUrl address(root);
        address.setQuery(query);
        return address;
    }
    QUrl base(root);
    if (!base.path().endsWith(QLatin1Char('/')))
        base.setPath(base.path() + QLatin1Char('/'));
    return base.resolved(QUrl(route));
}
} // namespace

std::optional<QJsonObject> WeblogApi::RestCall(const QString &route, const QString &user,
                                               const QString &password, const QJsonObject *body)
{
    if (!Start())
        return std::nullopt;
    const QUrl address = RouteAddress(m_address, route);
    const QByteArray login = "Basic " + (user + QLatin1Char(':') + password).toUtf8().toBase64();
    const WeblogConnection::Answer reply =
        body ? m_connection.Post(address, QJsonDocument(*body).toJson(QJsonDocument::Compact),
                                 "application/json", login)
             : m_connection.Get(address, login);
    const QJsonObject answer = QJsonDocument::fromJson(reply.body).object();
    if (reply.error.isEmpty() && !answer.isEmpty())
        return answer;
    // A refusal comes with the server's own words.
    if (const QString message = answer.value(QStringLiteral("message")).toString(); !message.isEmpty()) {
        m_faultCode = reply.status;
        m_error = message;
    } else if (!reply.error.isEmpty()) {
        m_error = QStringLiteral("The weblog server at %1 could not be reached: %2")
                      .arg(m_address.toString(), reply.error);
    } else {
        m_error = QStringLiteral("The weblog server at %1 did not answer as a weblog server.")
                      .arg(m_address.toString());
    }
    qCInfo(lcWeblogApi) << route << "failed:" << m_error;
    return std::nullopt;
}

// The interface serves one weblog; asking for the account first checks the password.
std::optional<QList<WeblogApi::Weblog>> WeblogApi::RestUsersBlogs(const QString &user,
                                                                  const QString &password)
{
    if (!RestCall(QStringLiteral("wp/v2/users/me"), user, password))
        return std::nullopt;
    const std::optional<QJsonObject> site = RestCall(QString(), user, password);
    if (!site)
        return std::nullopt;
    // Written as the XML-RPC interface gives it, so either way in finds the weblog configured.
    QString home = site->value(QStringLiteral("home")).toString();
    if (!home.isEmpty() && !home.endsWith(QLatin1Char('/')))
        home += QLatin1Char('/');
    return QList<Weblog>{{QStringLiteral("1"), site->value(QStringLiteral("name")).toString(), home}};
}

std::optional<QString> WeblogApi::RestNewPost(const QString &user, const QString &password, const Post &post)
{
    const QJsonObject content{{QStringLiteral("title"), post.title},
                              {QStringLiteral("content"), post.body},
                              {QStringLiteral("status"), QStringLiteral("publish")}};
    const std::optional<QJsonObject> made = RestCall(QStringLiteral("wp/v2/posts"), user, password, &content);
    if (!made)
        return std::nullopt;
    return QString::number(made->value(QStringLiteral("id")).toInteger());
}
