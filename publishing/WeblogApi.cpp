#include "WeblogApi.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcWeblogApi, "corvell.publishing.api")

namespace {
// Blogger's interface wants an application key; servers today ignore it.
const QString kAppKey = QStringLiteral("0123456789ABCDEF");
} // namespace

WeblogApi::WeblogApi(WeblogConnection &connection, QUrl postingAddress, const QString &interfaceName)
    : m_connection(connection), m_address(std::move(postingAddress)),
      m_rest(interfaceName.compare(QLatin1String("WP-API"), Qt::CaseInsensitive) == 0)
{
}

bool WeblogApi::Start()
{
    m_error.clear();
    m_faultCode = 0;
    if (!m_address.isValid() || m_address.scheme().isEmpty()) {
        m_error = QStringLiteral("\"%1\" is not a posting address.").arg(m_address.toString());
        return false;
    }
    return true;
}

std::optional<QVariant> WeblogApi::Call(const QString &method, const QVariantList &params)
{
    if (!Start())
        return std::nullopt;
    const WeblogConnection::Answer reply =
        m_connection.Post(m_address, XmlRpcCodec::EncodeCall(method, params), "text/xml");
    // A fault may come with an HTTP error status; its text says more than the status.
    const XmlRpcCodec::Answer answer = XmlRpcCodec::DecodeAnswer(reply.body);
    if (answer.ok)
        return answer.value;
    if (answer.faultCode != 0) {
        m_faultCode = answer.faultCode;
        m_error = answer.error;
    } else if (!reply.error.isEmpty()) {
        m_error = QStringLiteral("The weblog server at %1 could not be reached: %2")
                      .arg(m_address.toString(), reply.error);
    } else {
        m_error = QStringLiteral("The weblog server at %1 did not answer as a weblog server: %2")
                      .arg(m_address.toString(), answer.error);
    }
    qCInfo(lcWeblogApi) << method << "failed:" << m_error;
    return std::nullopt;
}

std::optional<QList<WeblogApi::Weblog>> WeblogApi::GetUsersBlogs(const QString &user, const QString &password)
{
    if (m_rest)
        return RestUsersBlogs(user, password);
    const std::optional<QVariant> answer =
        Call(QStringLiteral("blogger.getUsersBlogs"), {kAppKey, user, password});
    if (!answer)
        return std::nullopt;
    QList<Weblog> weblogs;
    for (const QVariant &entry : answer->toList()) {
        const QVariantMap blog = entry.toMap();
        weblogs.append({blog.value(QStringLiteral("blogid")).toString(),
                        blog.value(QStringLiteral("blogName")).toString(),
                        blog.value(QStringLiteral("url")).toString()});
    }
    return weblogs;
}

std::optional<QString> WeblogApi::NewPost(const QString &blogId, const QString &user, const QString &password,
                                          const Post &post, bool bloggerOnly)
{
    if (m_rest)
        return RestNewPost(user, password, post);
    std::optional<QVariant> answer;
    if (bloggerOnly) {
        const QString text = QStringLiteral("<title>%1</title>%2").arg(post.title.toHtmlEscaped(), post.body);
        answer = Call(QStringLiteral("blogger.newPost"), {kAppKey, blogId, user, password, text, true});
    } else {
        QVariantMap content{{QStringLiteral("title"), post.title},
                            {QStringLiteral("description"), post.body}};
        if (!post.link.isEmpty())
            content.insert(QStringLiteral("link"), post.link);
        answer = Call(QStringLiteral("metaWeblog.newPost"), {blogId, user, password, content, true});
    }
    if (!answer)
        return std::nullopt;
    return answer->toString();
}
