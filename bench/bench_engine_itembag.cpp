// Times what the main window does on every load: one GetItemBag per subscription.
// Usage: bench_engine_itembag [subscriptions]   (default 10000)

#include "EngineCore.h"
#include "InProcessLink.h"
#include "LinkedSubscribeClient.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QTextStream>

#include <ctime>

using namespace quillon;

namespace {
// Process CPU time: the machine may be busy with other work, which wall time would count.
class CpuTimer
{
public:
    void restart() { m_start = std::clock(); }
    [[nodiscard]] qint64 elapsedMs() const { return qint64(std::clock() - m_start) * 1000 / CLOCKS_PER_SEC; }

private:
    std::clock_t m_start = std::clock();
};

class IgnoringCallback : public ISubscribeClientCallback
{
public:
    void Setup(QObject *) override {}
    void Shutdown() override {}
    qint32 ProcessMessage(Handle &) override { return 0; }
};

void addSubscriptions(SubscribeClient &client, int count)
{
    for (int i = 0; i < count; ++i) {
        const QString url = QStringLiteral("http://feeds.example/%1.xml").arg(i);
        const Handle request =
            client.CreateItemRequest(QStringLiteral("NEWS"), QStringLiteral("Feed %1").arg(i), url);
        client.SubmitRequest(request, std::make_shared<IgnoringCallback>());
        client.ReleaseHandle(request);
    }
    QCoreApplication::processEvents();
}

qint64 readAll(SubscribeClient &client)
{
    qint64 checksum = 0;
    const Handle list = client.ListConsumerItems(QStringLiteral("*"), QStringLiteral("NEWS"));
    for (int i = 0; i < client.ListCount(list); ++i) {
        const Handle bag = client.GetItemBag(QStringLiteral("NEWS"), client.ListLong(list, i), 0);
        checksum += client.GetLongValue(bag, QStringLiteral("SUBSCRIPTIONID"));
        checksum += client.GetStringValue(bag, QStringLiteral("TITLE")).size();
        client.ReleaseHandle(bag);
    }
    client.ReleaseHandle(list);
    return checksum;
}
// The same reads straight on the core, without the client's handle table and copies.
qint64 readAllOnCore(EngineCore &core)
{
    const auto session = core.openSession({});
    qint64 checksum = 0;
    const auto ids = std::get<ListPtr>(core.call(session, QStringLiteral("ListConsumerItems"),
                                                 {QStringLiteral("*"), QStringLiteral("NEWS")}));
    for (const auto &id : ids->items()) {
        const PropertyValue bag =
            core.call(session, QStringLiteral("GetItemBag"), {QStringLiteral("NEWS"), id, 0});
        checksum += std::get<BagPtr>(bag)->number(QStringLiteral("SUBSCRIPTIONID"));
    }
    core.closeSession(session);
    return checksum;
}
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const int count = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 10000;
    QTemporaryDir dir;
    EngineCore core(dir.path());
    if (!core.open())
        return 1;
    auto client = LinkedSubscribeClient::create(std::make_unique<InProcessLink>(&core));
    QTextStream out(stdout);

    CpuTimer timer;
    addSubscriptions(*client, count);
    out << count << " adds: " << timer.elapsedMs() << " ms CPU\n";
    for (int round = 1; round <= 3; ++round) {
        timer.restart();
        const qint64 checksum = readAll(*client);
        out << "round " << round << ": " << count << " GetItemBag: " << timer.elapsedMs()
            << " ms CPU (checksum " << checksum << ")\n";
    }
    timer.restart();
    const qint64 checksum = readAllOnCore(core);
    out << "core only: " << count << " GetItemBag: " << timer.elapsedMs() << " ms CPU (checksum " << checksum
        << ")\n";
    return client->LiveHandleCount() == 0 ? 0 : 2;
}
