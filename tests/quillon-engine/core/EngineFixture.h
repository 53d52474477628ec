#pragma once

#include "CopyingCallback.h"
#include "EngineCalls.h"
#include "LocalHttpServer.h"
#include "TestEngine.h"

#include <QSignalSpy>
#include <QTest>

#include <memory>
#include <utility>

// Noon of 1 May 2024 UTC: where the tests' clock starts.
inline const QDateTime kStart = QDateTime(QDate(2024, 5, 1), QTime(12, 0), Qt::UTC);

// An RSS document with one item per guid; guids listed in withEnclosure carry an mp3.
inline QByteArray rss(const QString &title, const QStringList &guids, const QStringList &withEnclosure = {})
{
    QString out = QStringLiteral("<?xml version=\"1.0\"?><rss version=\"2.0\"><channel><title>%1</title>"
                                 "<link>http://example.com/</link><description>About %1</description>")
                      .arg(title);
    for (const QString &guid : guids) {
        out += QStringLiteral("<item><guid>%1</guid><title>Item %1</title><link>http://example.com/%1</link>"
                              "<description>&lt;p&gt;Body %1&lt;/p&gt;</description>")
                   .arg(guid);
        if (withEnclosure.contains(guid))
            out += QStringLiteral("<enclosure url=\"http://example.com/%1.mp3\" type=\"audio/mpeg\" "
                                  "length=\"1000\"/>")
                       .arg(guid);
        out += "</item>";
    }
    return (out + "</channel></rss>").toUtf8();
}

// A real engine on a temporary store, one client connected as "CONFIGCONSUMER" whose
// unsolicited messages land in events, and the calls the engine tests make through it.
class EngineFixture
{
public:
    using Fields = QList<std::pair<QString, QString>>;

    EngineFixture() : client(engine.newClient()), events(std::make_shared<CopyingCallback>(*client))
    {
        client->Connect("CONFIGCONSUMER", events);
    }

    // Submits a request bag made of fields and waits for its answer (null when none came).
    quillon::BagPtr request(const Fields &fields)
    {
        const quillon::BagPtr answer = EngineCalls::Request(*client, fields);
        return answer->names().isEmpty() ? nullptr : answer;
    }

    quillon::BagPtr preview(const QString &url)
    {
        auto answer = std::make_shared<CopyingCallback>(*client);
        client->RequestPreview("NEWS", url, answer);
        return QTest::qWaitFor([&answer] { return !answer->received.isEmpty(); }, 20000)
                   ? answer->received.first()
                   : nullptr;
    }

    // Adds a subscription and returns its ID (0 when the add failed).
    qint32 add(const QString &url, const QString &title = {})
    {
        const quillon::BagPtr answer = request({{"REQUEST", "ADD"}, {"URL", url}, {"TITLE", title}});
        const quillon::BagPtr result = answer ? answer->bag("Result") : nullptr;
        return result ? result->number("SUBSCRIPTIONID") : 0;
    }

    quillon::BagPtr itemBag(qint32 id)
    {
        const quillon::Handle bag = client->GetItemBag("NEWS", id, 0);
        quillon::BagPtr copy = CopyingCallback::copyBag(*client, bag);
        client->ReleaseHandle(bag);
        return copy;
    }

    // UpdateItem with text values; makes the subscription due at once.
    void update(qint32 id, const Fields &values = {})
    {
        const quillon::Handle bag = client->NewBag();
        for (const auto &[name, value] : values)
            client->SetStringValue(bag, name, value);
        client->UpdateItem("NEWS", id, bag);
        client->ReleaseHandle(bag);
    }

    void setSetting(const QString &consumer, const QString &section, const QString &key, const QString &value)
    {
        EngineCalls::SetSetting(*client, consumer, section, key, value);
    }

    // Fetching on, on the test's clock, every finished update counted.
    void startUpdating(std::function<QDateTime()> clock)
    {
        engine.core().setClock(std::move(clock));
        updates = std::make_unique<QSignalSpy>(&engine.core(), &quillon::EngineCore::subscriptionUpdated);
        engine.core().startUpdating();
    }

    // Waits until count more updates have finished; returns the last one's status.
    QString waitForUpdates(int count = 1)
    {
        const qsizetype target = updates->size() + count;
        if (!QTest::qWaitFor([&]() { return updates->size() >= target; }, 20000))
            return "(timed out)";
        return updates->at(target - 1).at(1).toString();
    }

    TestEngine engine;
    quillon::SubscribeClientPtr client;
    std::shared_ptr<CopyingCallback> events;
    std::unique_ptr<QSignalSpy> updates;
};

// Each test function on a fresh engine whose client must have released every handle by its end;
// feeds come from one local server.
class EngineTestCase : public QObject
{
    Q_OBJECT

protected:
    QString url(const QString &path) const { return m_server.url(path).toString(); }
    // Fetching on, on a clock that starts at kStart and moves when the test sets m_now.
    void startUpdating()
    {
        m_now = kStart;
        m_engine->startUpdating([this]() { return m_now; });
    }

    std::unique_ptr<EngineFixture> m_engine;
    LocalHttpServer m_server;
    QDateTime m_now = kStart;

protected Q_SLOTS:
    void initTestCase() { QVERIFY(m_server.listen()); }
    void init()
    {
        m_engine = std::make_unique<EngineFixture>();
        QVERIFY(m_engine->engine.isReady());
    }
    void cleanup()
    {
        QCOMPARE(m_engine->client->LiveHandleCount(), 0);
        m_engine.reset();
    }
};
