#include "DeliveryAgent.h"
#include "DeliveryTestFeeds.h"
#include "DovecotServer.h"
#include "EngineFixture.h"
#include "ImapStore.h"
#include "LocalHttpServer.h"
#include "MaildirStore.h"

#include <QStandardPaths>
#include <QTemporaryDir>

namespace {
// A store where the user reads a message in the mail program as the first move starts.
template <class Store> class HookedStore : public Store
{
public:
    template <class Where>
    HookedStore(Where where, std::function<void()> hook) : Store(std::move(where)), m_hook(std::move(hook))
    {
    }
    bool move(const MailStore::Folder &from, const MailStore::Folder &to, QString *error) override
    {
        if (m_hook)
            std::exchange(m_hook, {})();
        return Store::move(from, to, error);
    }

private:
    std::function<void()> m_hook;
};
} // namespace

// A category renamed in ConfigConsumer moves its mail, leaves no empty folder and loses no read
// mark set just before or as the move runs; in a Maildir tree and over IMAP (whose Maildir the
// test looks into as a mail program would).
class tst_FolderRename : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void categoryRenameLeavesNothingBehind_data()
    {
        QTest::addColumn<bool>("imap");
        QTest::newRow("Maildir") << false;
        QTest::newRow("IMAP") << true;
    }
    void categoryRenameLeavesNothingBehind();
};

void tst_FolderRename::categoryRenameLeavesNothingBehind()
{
    QFETCH(bool, imap);
    QStandardPaths::setTestModeEnabled(true);
    LocalHttpServer server;
    QVERIFY(server.listen());
    EngineFixture engine;
    engine.startUpdating([] { return QDateTime::currentDateTimeUtc(); });
    QTemporaryDir mail;
    DovecotServer dovecot;
    QString why;
    if (imap && !dovecot.start(&why))
        QSKIP(qPrintable(why));
    const QString root = imap ? dovecot.maildir() : mail.filePath("Mail");
    const MaildirProbe probe(root);
    bool readAsItMoved = false;
    const auto hook = [&] { readAsItMoved = probe.markSeen(probe.files({"Tech", "Daily", "Beta"}).first()); };
    DeliveryAgent::Options options;
    options.readPollMs = options.replanMs = 3600000; // only the looks the agent takes itself
    std::unique_ptr<MailStore> store = std::make_unique<HookedStore<MaildirStore>>(root, hook);
    if (imap)
        store = std::make_unique<HookedStore<ImapStore>>(
            ImapSession::Account{"127.0.0.1", dovecot.port(), false, dovecot.user(), dovecot.password()},
            hook);
    DeliveryAgent agent(engine.engine.newClient(), std::move(store), mail.filePath("index.json"), options);
    QVERIFY2(agent.start(&why), qPrintable(why));
    QList<qint32> ids;
    for (const QString name : {"Alpha", "Beta"}) {
        server.serve("/" + name, DeliveryTestFeeds::feed(name, 1, 3));
        ids << EngineCalls::AddSubscription(*engine.client, name, server.url("/" + name).toString(),
                                            "Tech~~~Daily", {"OLCONSUMER"});
        QTRY_COMPARE_WITH_TIMEOUT(probe.count({"Tech", "Daily", name}), 3, 30000);
    }

    QVERIFY(probe.markSeen(probe.files({"Tech", "Daily", "Alpha"}).first())); // after the agent's last look
    for (const qint32 id : ids)
        engine.update(id, {{"CATEGORY", "Science~~~Daily"}}); // what the main window's rename sends
    agent.replanFolders();
    QVERIFY(readAsItMoved);
    QCOMPARE(probe.count({"Science", "Daily", "Alpha"}) + probe.count({"Science", "Daily", "Beta"}), 6);
    QVERIFY(!probe.exists({"Tech", "Daily", "Alpha"}) && !probe.exists({"Tech", "Daily"}) &&
            !probe.exists({"Tech"}));
    for (const qint32 id : ids)
        QTRY_COMPARE(engine.itemBag(id)->text("ITEMREADCOUNT"), QStringLiteral("1"));
}

QTEST_MAIN(tst_FolderRename)
#include "tst_FolderRename.moc"
