#pragma once

#include "FolderPlan.h"

#include <QDateTime>
#include <QList>
#include <QString>

// One article as it becomes one mail message.
struct ArticleMessage
{
    struct Enclosure
    {
        QString url;
        QString type;
        qint64 length = -1;
    };

    qint32 articleId = 0;
    qint32 subscriptionId = 0;
    QString guid;
    QString subject; // plain text
    QString link;
    QString author;
    QString bodyHtml;
    QDateTime date; // invalid: the feed gave none
    QList<Enclosure> enclosures;
    QString feedTitle;
    QString feedUrl;
    FolderPlan::Theme theme = FolderPlan::Theme::Both;
    bool showImages = false; // the reader asked for the feed's remote content
};
