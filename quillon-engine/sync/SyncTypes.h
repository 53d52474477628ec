#pragma once

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QSet>
#include <QString>

namespace quillon {

// A subscription as the sync server keeps it; category is "" at the top.
struct RemoteFeed
{
    QString id;
    QString url;
    QString title;
    QString category;
    int unread = -1; // the server's count of unread articles, -1 when it gives none
};

// One article the server holds, with its read state.
struct RemoteArticle
{
    QString id;
    QString feedId;
    QString link;
    QString guid;
    bool read = false;
};

struct LocalSubscription
{
    qint32 id = 0;
    QString url;
    QString title;
    QString category;
};

struct LocalArticle
{
    qint64 id = 0;
    QString feedUrl;
    QString link;
    QString guid;
    bool read = false;
};

// What the engine holds when a run starts: its subscriptions, how many of their articles are
// unread, the subscriptions both sides had after the last run, and the changes queued since.
// The articles themselves are read only for the feeds a run compares.
struct SyncSnapshot
{
    QList<LocalSubscription> subscriptions;
    QHash<QString, int> unreadByFeed; // by address, feeds with articles here only
    QSet<QString> feedsChangedHere;   // with read marks queued
    QHash<QString, QString> agreed;   // address to the server's ID, after the last run
    QSet<QString> subscribedHere;
    QSet<QString> unsubscribedHere;
    // Read (true) or unread (false), by article ID, the latest change of each.
    QHash<qint64, bool> readChangedHere;
    qint64 lastChangeId = 0;
};

} // namespace quillon
