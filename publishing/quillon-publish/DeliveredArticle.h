#pragma once

#include "DeliveredMessage.h"
#include "PostComposer.h"
#include "SubscribeClient.h"

#include <QList>
#include <QString>

#include <optional>

// Finds the article a delivered message is about among the articles the engine keeps: in the
// subscription the message names (else the one with its feed address), the article whose
// message identity is the message's; by its address or title when the feed changed its keys.
class DeliveredArticle
{
public:
    explicit DeliveredArticle(quillon::SubscribeClientPtr client);

    // Nothing when it is not there, with the reason in Error(). Engine failures propagate.
    [[nodiscard]] std::optional<PostComposer::Article> Find(const DeliveredMessage &message);
    [[nodiscard]] const QString &Error() const { return m_error; }

private:
    struct Stored
    {
        QString guid;
        PostComposer::Article article;
    };

    [[nodiscard]] qint32 SubscriptionOf(const DeliveredMessage &message);
    [[nodiscard]] std::optional<QList<Stored>> StoredArticles(qint32 subscriptionId);
    [[nodiscard]] Stored ReadItem(quillon::Handle item) const;

    quillon::SubscribeClientPtr m_client;
    QString m_feedTitle;
    QString m_feedUrl;
    QString m_error;
};
