#pragma once

#include "WeblogConnection.h"
#include "XmlRpcCodec.h"

#include <QList>
#include <QString>
#include <QUrl>

#include <optional>

// The calls a weblog server answers at its posting address (XML-RPC, the Blogger and
// MetaWeblog interfaces). Every failure leaves a message for the user in LastError(): the
// server's own fault text, or why the server could not be reached or understood.
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

    WeblogApi(WeblogConnection &connection, QUrl postingAddress);

    [[nodiscard]] std::optional<QList<Weblog>> GetUsersBlogs(const QString &user, const QString &password);
    // The new post's ID. bloggerOnly: the server knows only the Blogger interface, which takes
    // the post as one text.
    [[nodiscard]] std::optional<QString> NewPost(const QString &blogId, const QString &user,
                                                 const QString &password, const Post &post, bool bloggerOnly);
    [[nodiscard]] const QString &LastError() const { return m_error; }
    [[nodiscard]] int LastFaultCode() const { return m_faultCode; }

private:
    [[nodiscard]] std::optional<QVariant> Call(const QString &method, const QVariantList &params);

    WeblogConnection &m_connection;
    QUrl m_address;
    QString m_error;
    int m_faultCode = 0;
};
