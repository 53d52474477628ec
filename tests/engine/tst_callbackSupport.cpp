#include "CBAddSub.h"
#include "ClientAccess.h"
#include "EngineClientTest.h"
#include "HandleGuard.h"
#include "callbackSupport.h"

#include <QStringList>

using namespace quillon;
using namespace EngineCalls;

// Stands in for the main window: offers the handlers the callbacks call by name.
class FakeWindow : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE void SetStatusText(const QString &text) { statusTexts.append(text); }
    Q_INVOKABLE void EventSubscribeClientMessage(qint32) { ++forwarded; }
    Q_INVOKABLE void DoDisplayRefresh() { ++refreshes; }

    QStringList statusTexts;
    int forwarded = 0;
    int refreshes = 0;
};

class tst_callbackSupport : public EngineClientTest
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void threeAutoBoundAddsReportTwiceThenRefresh();
    void answerWithoutResultOrIdOnlyForwards();
    void addWithoutAutoBindKeepsCounterRaised();
    void bagsMirrorTheLocalStore();

private:
    FakeWindow m_window;
};

void tst_callbackSupport::init()
{
    EngineClientTest::init();
    callbackSupport::PendingAddCount() = 0;
    m_window.statusTexts.clear();
    m_window.forwarded = m_window.refreshes = 0;
}

void tst_callbackSupport::threeAutoBoundAddsReportTwiceThenRefresh()
{
    for (const char *title : {"One", "Two", "Three"})
        callbackSupport::RequestAddSubscription(&m_window, m_client, QString::fromLatin1(title),
                                                QStringLiteral("http://127.0.0.1/%1").arg(title), true, {},
                                                {}, {});
    QCOMPARE(m_window.statusTexts, QStringList({"Requesting: One", "Requesting: Two", "Requesting: Three"}));
    QCOMPARE(callbackSupport::PendingAddCount(), 3);
    QTRY_COMPARE(m_window.forwarded, 3);
    QCOMPARE(m_window.statusTexts.mid(3), QStringList({"Added: One", "Added: Two"}));
    QCOMPARE(m_window.refreshes, 1);
    QCOMPARE(callbackSupport::PendingAddCount(), 0);

    // Each auto-bound add is delivered to the Outlook consumer, and stays so after the confirming bind.
    QCOMPARE(ConsumerItems(*m_client, "OLCONSUMER").size(), 3);
}

void tst_callbackSupport::answerWithoutResultOrIdOnlyForwards()
{
    callbackSupport::PendingAddCount() = 2;
    for (qint32 id : {-1, 0, kMissing}) {
        auto callback = std::make_shared<CBAddSub>();
        callback->Setup(&m_window, m_client, true);
        HandleGuard answer(*m_client, m_client->NewBag());
        m_client->SetStringValue(answer.get(), "MESSAGE", "SubscriptionAddResult");
        if (id != -1) {
            HandleGuard result(*m_client, m_client->NewBag());
            m_client->SetLongValue(result.get(), "SUBSCRIPTIONID", id);
            m_client->SetHandleValue(answer.get(), "Result", result.get());
        }
        Handle handle = answer.get();
        callback->ProcessMessage(handle);
    }
    QCOMPARE(m_window.forwarded, 3);
    QVERIFY(m_window.statusTexts.isEmpty());
    QCOMPARE(m_window.refreshes, 0);
    QCOMPARE(callbackSupport::PendingAddCount(), 2);
}

void tst_callbackSupport::addWithoutAutoBindKeepsCounterRaised()
{
    callbackSupport::RequestAddSubscription(&m_window, m_client, {}, "http://127.0.0.1/a", false, "me",
                                            QString(), "News");
    QCOMPARE(m_window.statusTexts.first(), "Requesting: http://127.0.0.1/a");
    QTRY_COMPARE(m_window.forwarded, 1);
    QCOMPARE(callbackSupport::PendingAddCount(), 1);
    QCOMPARE(m_window.refreshes, 0);

    // Nothing was bound, and a user without a password was not sent.
    QCOMPARE(ConsumerItems(*m_client, "OLCONSUMER").size(), 0);
    const qint32 added = ConsumerItems(*m_client, "*").value(0);
    QCOMPARE(ItemText(*m_client, added, "USER"), kMissingText);
    QCOMPARE(ItemText(*m_client, added, "CATEGORY"), "News");

    // A later auto-bound add reports instead of refreshing: the counter never came back to 0.
    callbackSupport::RequestAddSubscription(&m_window, m_client, "B", "http://127.0.0.1/b", true, {}, {}, {});
    QTRY_COMPARE(m_window.forwarded, 2);
    QCOMPARE(m_window.statusTexts.last(), "Added: B");
    QCOMPARE(m_window.refreshes, 0);

    // Updating all makes only the delivered subscriptions due.
    callbackSupport::UpdateAllSubscriptions(*m_client);
    for (const qint32 id : ConsumerItems(*m_client, "*"))
        QCOMPARE(ItemText(*m_client, id, "NEXTUPDATETIME") != kMissingText, id != added);

    // A removal without a name shows the bare prefix.
    callbackSupport::RemoveSubscription(*m_client, added, QString(), &m_window);
    QCOMPARE(m_window.statusTexts.last(), "Removing: ");
}

void tst_callbackSupport::bagsMirrorTheLocalStore()
{
    SaveSetting("Quillon", "NetworkModule", "ProxyPort", "8080");

    HandleGuard defaults(*m_client, m_client->NewBag());
    m_client->SetStringValue(defaults.get(), "ProxyPort", "80");
    m_client->SetStringValue(defaults.get(), "ProxyHost", "none");
    m_client->SetStringValue(defaults.get(), QString(), "ignored");
    HandleGuard loaded(*m_client,
                       ClientAccess::LoadBagFromSettings(*m_client, defaults.get(), "NetworkModule"));
    QCOMPARE(m_client->GetStringValue(loaded.get(), "ProxyPort"), "8080");
    QCOMPARE(m_client->GetStringValue(loaded.get(), "ProxyHost"), "none");
    HandleGuard names(*m_client, m_client->ListNames(loaded.get()));
    QCOMPARE(m_client->ListCount(names.get()), 2);

    m_client->SetStringValue(loaded.get(), "ProxyHost", "proxy.local");
    ClientAccess::SaveBagToSettings(*m_client, loaded.get(), "NetworkModule");
    QCOMPARE(GetSetting("Quillon", "NetworkModule", "ProxyHost"), "proxy.local");
}

QTEST_MAIN(tst_callbackSupport)
#include "tst_callbackSupport.moc"
