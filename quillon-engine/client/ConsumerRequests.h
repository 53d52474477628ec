#pragma once

#include "SubscribeClient.h"

#include <QList>
#include <QObject>
#include <QPointer>

#include <functional>

// The calls a consumer program (mail delivery, media downloads) makes to the engine besides
// reading: connecting with a function for the engine's messages, and request bags answered at
// a function; neither function runs once its owner is gone.
class ConsumerRequests
{
public:
    using OnBag = std::function<void(quillon::Handle)>;

    static void connect(quillon::SubscribeClient &client, const QString &consumerId, QObject *owner,
                        OnBag onMessage);
    // A bag with "REQUEST" = kind, filled by fill, answered at answer (which may be empty).
    static void submit(quillon::SubscribeClient &client, const QString &kind, const OnBag &fill,
                       QObject *owner, OnBag answer);
    // "PENDINGARTICLES": at most limit of the articles waiting for this consumer, those after the
    // article ID after (0: from the first), answered at answer.
    static void askForArticles(quillon::SubscribeClient &client, qint32 limit, qint32 after, QObject *owner,
                               OnBag answer);
    // "ARTICLEIDS" of a request bag.
    static void putIds(quillon::SubscribeClient &client, quillon::Handle bag, const QList<qint32> &ids);
    // The message's name when it is "EngineTerminated" or its "CONSUMERID" is this consumer;
    // "" for messages about other consumers.
    [[nodiscard]] static QString messageFor(quillon::SubscribeClient &client, quillon::Handle message,
                                            const QString &consumerId);
    // Whether a failed call means the engine is gone (rather than a refusal worth retrying).
    [[nodiscard]] static bool connectionLost(const std::exception &e);
};
