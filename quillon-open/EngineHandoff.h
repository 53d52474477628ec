#pragma once

#include "OpenTarget.h"
#include "SubscribeClient.h"

#include <QObject>

#include <functional>

// Hands what the desktop opened to the engine, connected as the browser plug-in's consumer,
// and waits for the engine's answer. An OPML file needs ConfigConsumer: when none runs, it is
// started and the file handed over once it has connected.
class EngineHandoff : public QObject
{
public:
    struct Outcome
    {
        bool ok = false;
        QString text; // what happened, or why nothing did
    };
    using Starter = std::function<bool()>;

    explicit EngineHandoff(quillon::SubscribeClientPtr client, Starter startConfigConsumer);

    [[nodiscard]] Outcome open(const OpenTarget &target);

    // How long ConfigConsumer may take to connect after it was started.
    static constexpr int kStartWaitMs = 30000;

private:
    struct Answer
    {
        bool received = false;
        QString message;
        QString error;
        QString title;
        qint32 count = 0;
    };

    [[nodiscard]] Answer submit(const QString &kind, const QString &name, const QString &value);
    [[nodiscard]] Outcome openFeed(const QString &url);
    [[nodiscard]] Outcome importOpml(const QString &path);

    quillon::SubscribeClientPtr m_client;
    Starter m_startConfigConsumer;
};
