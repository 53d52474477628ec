#pragma once

#include "SubscribeClient.h"

#include <QByteArray>
#include <QList>
#include <QString>

// Subscriptions written as an OPML 2.0 document: each category path ("News~~~World") becomes
// nested folder outlines, each subscription a feed outline inside its folder.
class OpmlExport
{
public:
    struct Subscription
    {
        QString title;
        QString url;
        QString category;
    };

    // Every subscription the engine holds, in its order. Throws quillon::EngineError.
    [[nodiscard]] static QList<Subscription> ReadSubscriptions(quillon::SubscribeClient &client);
    [[nodiscard]] static QByteArray Document(const QString &title, const QList<Subscription> &subscriptions);
    // Writes the document to path whole or not at all; the reason when it failed.
    [[nodiscard]] static QString Write(const QString &path, const QString &title,
                                       const QList<Subscription> &subscriptions);
};
