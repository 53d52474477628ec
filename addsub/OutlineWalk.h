#pragma once

#include "SubscribeClient.h"

#include <QHash>
#include <QString>

class FeedListModel;
class QStandardItem;

// Walks an outline tree the engine answered (nodes with title/text, description, xmlUrl and
// children) into a list grid, depth first in document order: a node with xmlUrl is a feed row
// at depth + 1 (its children ignored); a node with children is a folder row at depth when it has
// a title, and its children are walked at depth + 1 either way; anything else is skipped.
class OutlineWalk
{
public:
    // subscribed maps feed addresses to the IDs of the subscriptions that already have them.
    OutlineWalk(quillon::SubscribeClient &client, FeedListModel &grid, int folderRowType,
                const QHash<QString, qint32> &subscribed);

    void Walk(quillon::Handle nodeList, int depth, QStandardItem *parent = nullptr);

private:
    [[nodiscard]] QString Text(quillon::Handle node, const QString &name, const QString &fallback);

    quillon::SubscribeClient &m_client;
    FeedListModel &m_grid;
    int m_folderRowType;
    const QHash<QString, qint32> &m_subscribed;
};
