#pragma once

#include "PostComposer.h"
#include "PublishingUtils.h"
#include "SubscribeClient.h"

#include <QList>
#include <QString>

class QWidget;

// Posts an article to the user's weblogs: asks where and how (frmPublishRequestOpt, or not at
// all when the defaults say to post without asking), composes the post from the templates,
// lets the user edit it when asked, and sends it. Every failure is shown with its reason.
class ArticlePublisher
{
public:
    // templateFolder: where the post templates are; QuillonData by default.
    ArticlePublisher(quillon::SubscribeClientPtr client, QWidget *owner, QString templateFolder = QString());

    // True when the article went to at least one weblog.
    bool Publish(const PostComposer::Article &article);

private:
    [[nodiscard]] QList<qint32> ChooseWeblogs(const QString &itemTitle, const PrePublishChoices &stored);
    [[nodiscard]] bool PostTo(const PublishingUtils::WeblogSettings &weblog, const WeblogApi::Post &post);
    [[nodiscard]] bool AskPassword(PublishingUtils::WeblogSettings &weblog);

    quillon::SubscribeClientPtr m_client;
    QWidget *m_owner;
    QString m_templateFolder;
};
