#include "OutlineWalk.h"

#include "FeedListModel.h"
#include "HandleGuard.h"
#include "PropertyBag.h"

OutlineWalk::OutlineWalk(quillon::SubscribeClient &client, FeedListModel &grid, int folderRowType,
                         const QHash<QString, qint32> &subscribed)
    : m_client(client), m_grid(grid), m_folderRowType(folderRowType), m_subscribed(subscribed)
{
}

QString OutlineWalk::Text(quillon::Handle node, const QString &name, const QString &fallback)
{
    const QString value = m_client.GetStringValue(node, name);
    return value == quillon::kMissingText ? fallback : value;
}

void OutlineWalk::Walk(quillon::Handle nodeList, int depth, QStandardItem *parent)
{
    const qint32 count = m_client.ListCount(nodeList);
    for (qint32 i = 0; i < count; ++i) {
        HandleGuard node(m_client, m_client.ListHandle(nodeList, i));
        const QString text = Text(node.get(), QStringLiteral("text"), QString());
        const QString title = Text(node.get(), QStringLiteral("title"), text);
        // A node that has "xmlUrl" is a feed, even with an empty address.
        const QString url = m_client.GetStringValue(node.get(), QStringLiteral("xmlUrl"));
        if (url != quillon::kMissingText) {
            const QString description = Text(node.get(), QStringLiteral("description"), text);
            m_grid.AddFeed(parent, title, url, description, depth + 1, m_subscribed.value(url, 0));
            continue;
        }
        HandleGuard children(m_client, m_client.GetHandleValue(node.get(), QStringLiteral("children")));
        if (!children.isValid())
            continue;
        QStandardItem *folder =
            title.isEmpty() ? parent : m_grid.AddFolder(parent, title, depth, m_folderRowType);
        Walk(children.get(), depth + 1, folder);
    }
}
