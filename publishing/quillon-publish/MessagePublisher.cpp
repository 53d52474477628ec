#include "MessagePublisher.h"

#include "ArticlePublisher.h"
#include "DeliveredArticle.h"
#include "StandardDialogs.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcMessagePublisher, "corvell.publishing.message")

MessagePublisher::MessagePublisher(quillon::SubscribeClientPtr client, QString templateFolder)
    : m_client(std::move(client)), m_templateFolder(std::move(templateFolder))
{
}

MessagePublisher::Result MessagePublisher::Publish(const QByteArray &message)
{
    m_error.clear();
    const std::optional<DeliveredMessage> delivered = DeliveredMessage::read(message);
    if (!delivered)
        return NotFound(QStringLiteral("This is not a message the mail delivery wrote: it names no feed."));
    std::optional<PostComposer::Article> article;
    try {
        DeliveredArticle finder(m_client);
        article = finder.Find(*delivered);
        if (!article)
            return NotFound(finder.Error());
    } catch (const std::exception &e) {
        return NotFound(QStringLiteral("The engine could not be asked: %1").arg(QString::fromUtf8(e.what())));
    }
    qCInfo(lcMessagePublisher) << "publishing" << article->title << "of" << article->feedTitle;
    return ArticlePublisher(m_client, nullptr, m_templateFolder).Publish(*article) ? kPublished
                                                                                   : kNotPublished;
}

MessagePublisher::Result MessagePublisher::NotFound(const QString &why)
{
    m_error = why;
    ShowAlert(nullptr, QStringLiteral("The article of this message was not found."), why);
    return kNotFound;
}
