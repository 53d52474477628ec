#pragma once

#include "PromptSeam.h"
#include "TestEngine.h"

#include <QList>
#include <QObject>

#include <QString>

// Subscriptions made the way the program makes them: an add request, answered later.
namespace DialogTestEngine {

// Connects the client as the configuration consumer.
void ConnectClient(quillon::SubscribeClient &client);
// The new subscription's ID, or 0 when the engine did not answer in time.
[[nodiscard]] qint32 AddSubscription(quillon::SubscribeClient &client, const QString &title,
                                     const QString &url);
// A property of the subscription as text, "-237237" when absent.
[[nodiscard]] QString ItemText(quillon::SubscribeClient &client, qint32 id, const QString &name);

} // namespace DialogTestEngine

// What the engine-backed dialog tests share: strings loaded, a fresh engine and a connected
// client per test, the questions asked, and no handle left behind.
class EngineDialogTest : public QObject
{
    Q_OBJECT

protected:
    std::unique_ptr<TestEngine> m_engine;
    quillon::SubscribeClientPtr m_client;
    QList<Prompt> m_asked;

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
};
