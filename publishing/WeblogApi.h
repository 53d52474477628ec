#pragma once

#include "WeblogConnection.h"
#include "XmlRpcCodec.h"

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QUrl>

#include <optional>

// The calls a weblog server answers at its posting address: XML-RPC (the Blogger and
// MetaWeblog interfaces), or WordPress's REST interface ("WP-API"). Every failure leaves a message for the
// user in LastError(): the server's own fault text, or why the server could not be reached or understood.
class WeblogApi
{
public:
    struct Weblog
    {
        QString id;
        QString name;
        QString url;
    };
    struct Post
    {
        QString title;
        QString body;
        QString link; // the article the post is about; may be empty
    };

    // interfaceName: as the service and the RSD document name it; "WP-API" is the REST interface.
    WeblogApi(WeblogConnection &connection, QUrl postingAddress, const QString &interfaceName = QString());

    [[nodiscard]] std::optional<QList<Weblog>> GetUsersBlogs(const QString &user, const QString &password);
    // The new post's ID. bloggerOnly: the server knows only the Blogger interface, which takes
    // the post as one text.
    [[nodiscard]] std::optional<QString> NewPost(const QString &blogId, const QString &user,
                                                 const QString &password, const Post &post, bool bloggerOnly);
    [[nodiscard]] const QString &LastError() const { return m_error; }
    [[nodiscard]] int LastFaultCode() const { return m_faultCode; }

private:
    // Clears the last failure; false, with the reason, when there is no address to call.
    [[nodiscard]] bool Start();
    [[nodiscard]] std::optional<QVariant> Call(const QString &method, const QVariantList &params);
    // A JSON request under the REST root: a GET, or a POST of body.
    [[nodiscard]] std::optional<QJsonObject> RestCall(const QString &route, const QString &user,
                                                      const QString &password,
                                                      const QJsonObject *body = nullptr);
    [[nodiscard]] std::optional<QList<Weblog>> RestUsersBlogs(const QString &user, const QString &password);
    [[nodiscard]] std::optional<QString> RestNewPost(const QString &user, const QString &password,
                                                     const Post &post);

    WeblogConnection &m_connection;
    QUrl m_address;
    bool m_rest = false;
    QString m_error;
    int m_faultCode = 0;
};
