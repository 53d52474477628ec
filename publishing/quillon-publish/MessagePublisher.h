#pragma once

#include "SubscribeClient.h"

#include <QByteArray>
#include <QString>

// Publishes the article a delivered message is about, the way the preview's Publish command
// does: where and how are asked unless the defaults say to post at once. What stops it is
// shown to the user and handed back for the terminal.
class MessagePublisher
{
public:
    enum Result { kPublished = 0, kNotPublished = 1, kNotFound = 2 };

    // templateFolder: where the post templates are; QuillonData by default.
    explicit MessagePublisher(quillon::SubscribeClientPtr client, QString templateFolder = QString());

    [[nodiscard]] Result Publish(const QByteArray &message);
    // Why nothing was published; empty when the user chose not to or the weblog said why.
    [[nodiscard]] const QString &Error() const { return m_error; }

private:
    Result NotFound(const QString &why);

    quillon::SubscribeClientPtr m_client;
    QString m_templateFolder;
    QString m_error;
};
