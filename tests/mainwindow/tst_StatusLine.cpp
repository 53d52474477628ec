#include "AddProgress.h"
#include "AddRequestQueue.h"
#include "MainWindowTest.h"
#include "callbackSupport.h"

#include <QSignalSpy>

// What the main window's status line says once adds and imports are done, over the real engine
// (fetching off).
class tst_StatusLine : public MainWindowTest
{
    Q_OBJECT
private Q_SLOTS:
    void endsTellingTheTruth_data();
    void endsTellingTheTruth();
};

void tst_StatusLine::endsTellingTheTruth_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("refusedAt"); // the add sent without an address, which the engine refuses
    QTest::addColumn<QString>("expected");
    QTest::newRow("one add") << "add" << 1 << -1 << "Added: Feed 0";
    QTest::newRow("two adds") << "add" << 2 << -1 << "Added 2 subscriptions";
    QTest::newRow("one of three refused") << "add" << 3 << 1 << "Added 2 subscriptions; 1 could not be added";
    QTest::newRow("import of 120") << "import" << 120 << -1 << "Added 120 subscriptions";
}

void tst_StatusLine::endsTellingTheTruth()
{
    QFETCH(QString, action);
    QFETCH(int, count);
    QFETCH(int, refusedAt);
    QFETCH(QString, expected);
    callbackSupport::PendingAddCount() = 0;
    frmMainWindow &window = f->open();
    const int before = window.RefreshCount();
    QSignalSpy counts(&AddProgress::Instance(), &AddProgress::CountChanged);
    const bool add = action == QLatin1String("add");
    QList<AddRequestQueue::Request> imports;
    for (int i = 0; i < count; ++i) {
        const QString url = i == refusedAt ? QString() : QStringLiteral("http://127.0.0.1:9/%1").arg(i);
        if (add)
            callbackSupport::RequestAddSubscription(&window, f->client, QStringLiteral("Feed %1").arg(i), url,
                                                    true, {}, {}, {});
        else
            imports.append({QString(), url, QStringLiteral("Imported")});
    }
    if (!add) {
        AddRequestQueue::Instance().Enqueue(&window, f->client, imports);
        window.SetStatusText(QStringLiteral("Uploading Requests To Server"));
    }
    QTRY_COMPARE_WITH_TIMEOUT(window.StatusText(), expected, (add ? 15000 : 60000));
    if (add) {
        QVERIFY(!AddProgress::Instance().Running());
        // A refused add leaves the pending counter raised, so only a clean run refreshes the window.
        QCOMPARE(window.RefreshCount(), before + (refusedAt < 0 ? 1 : 0));
        return;
    }
    QVERIFY(!counts.isEmpty());
    QVERIFY(counts.last().first().toString().startsWith(QLatin1String("Importing ")));
    QVERIFY(counts.last().first().toString().endsWith(QStringLiteral(" of %1...").arg(count)));
    QCOMPARE(EngineCalls::ConsumerItems(*f->other, "OLCONSUMER").size(), count);
}

QTEST_MAIN(tst_StatusLine)
#include "tst_StatusLine.moc"
