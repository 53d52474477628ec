#pragma once

#include "CopyingCallback.h"
#include "EngineCalls.h"
#include "TestEngine.h"

#include <QSignalSpy>
#include <QTest>

#include <memory>
#include <utility>

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
        const quillon::Handle bag = client->NewBag();
        for (const auto &[name, value] : fields)
            client->SetStringValue(bag, name, value);
        auto answer = std::make_shared<CopyingCallback>(*client);
        client->SubmitRequest(bag, answer);
        client->ReleaseHandle(bag);
        return waitFor(*answer);
    }

    quillon::BagPtr preview(const QString &url)
    {
        auto answer = std::make_shared<CopyingCallback>(*client);
        client->RequestPreview("NEWS", url, answer);
        return waitFor(*answer);
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

private:
    static quillon::BagPtr waitFor(const CopyingCallback &answer)
    {
        if (!QTest::qWaitFor([&answer]() { return !answer.received.isEmpty(); }, 20000))
            return nullptr;
        return answer.received.first();
    }
};
