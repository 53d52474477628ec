#include "AddProgress.h"
#include "AddRequestQueue.h"
#include "LocalHttpServer.h"
#include "MainWindowTest.h"
#include "WebArticleView.h"
#include "callbackSupport.h"
#include "frmPreviewSubscription.h"

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>

// What the main window's status line and the preview's caption say once their work is done,
// over the real engine (fetching off) and a local feed server.
class tst_StatusLine : public MainWindowTest
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { QVERIFY(m_server.listen()); }
    void endsTellingTheTruth_data();
    void endsTellingTheTruth();

private:
    void add(int count, int refusedAt);
    void import(int count);
    void remove();
    void preview(const QString &title);

    LocalHttpServer m_server;
};

void tst_StatusLine::endsTellingTheTruth_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("refusedAt"); // the add sent without an address, which the engine refuses
    QTest::addColumn<QString>("title"); // the title the preview's caller gives
    QTest::addColumn<QString>("expected");
    QTest::newRow("one add") << "add" << 1 << -1 << ""
                             << "Added: Feed 0";
    QTest::newRow("two adds") << "add" << 2 << -1 << ""
                              << "Added 2 subscriptions";
    QTest::newRow("one of three refused") << "add" << 3 << 1 << ""
                                          << "Added 2 subscriptions; 1 could not be added";
    QTest::newRow("import of 120") << "import" << 120 << -1 << ""
                                   << "Added 120 subscriptions";
    QTest::newRow("removal") << "remove" << 1 << -1 << ""
                             << "";
    QTest::newRow("preview, no title given") << "preview" << 0 << -1 << ""
                                             << "Corvell - Preview for 'Garden'";
    QTest::newRow("preview, title given") << "preview" << 0 << -1 << "Mine"
                                          << "Corvell - Preview for 'Mine'";
}

void tst_StatusLine::endsTellingTheTruth()
{
    QFETCH(QString, action);
    QFETCH(int, count);
    QFETCH(int, refusedAt);
    QFETCH(QString, title);
    callbackSupport::PendingAddCount() = 0;
    if (action == QLatin1String("add"))
        add(count, refusedAt);
    else if (action == QLatin1String("import"))
        import(count);
    else if (action == QLatin1String("remove"))
        remove();
    else
        preview(title);
}

void tst_StatusLine::add(int count, int refusedAt)
{
    QFETCH(QString, expected);
    frmMainWindow &window = f->open();
    const int before = window.RefreshCount();
    for (int i = 0; i < count; ++i) {
        const QString url = i == refusedAt ? QString() : QStringLiteral("http://127.0.0.1:9/%1").arg(i);
        callbackSupport::RequestAddSubscription(&window, f->client, QStringLiteral("Feed %1").arg(i), url,
                                                true, {}, {}, {});
    }
    QTRY_COMPARE_WITH_TIMEOUT(window.StatusText(), expected, 15000);
    QVERIFY(!AddProgress::Instance().Running());
    // A refused add leaves the pending counter raised, so only a clean run refreshes the window.
    QCOMPARE(window.RefreshCount(), before + (refusedAt < 0 ? 1 : 0));
}

void tst_StatusLine::import(int count)
{
    QFETCH(QString, expected);
    frmMainWindow &window = f->open();
    QSignalSpy counts(&AddProgress::Instance(), &AddProgress::CountChanged);
    QList<AddRequestQueue::Request> requests;
    for (int i = 0; i < count; ++i)
        requests.append(
            {QString(), QStringLiteral("http://127.0.0.1:9/%1").arg(i), QStringLiteral("Imported")});
    AddRequestQueue::Instance().Enqueue(&window, f->client, requests);
    window.SetStatusText(QStringLiteral("Uploading Requests To Server"));
    QTRY_COMPARE_WITH_TIMEOUT(window.StatusText(), expected, 60000);
    QVERIFY(!counts.isEmpty());
    QVERIFY(counts.last().first().toString().startsWith(QLatin1String("Importing ")));
    QVERIFY(counts.last().first().toString().endsWith(QStringLiteral(" of %1...").arg(count)));
    QCOMPARE(EngineCalls::ConsumerItems(*f->other, "OLCONSUMER").size(), count);
}

void tst_StatusLine::remove()
{
    const qint32 id = f->add(QStringLiteral("Gone"));
    frmMainWindow &window = f->open();
    QVERIFY(window.SelectRowByID(id));
    window.SetStatusText(QStringLiteral("idle"));
    f->prompts.answers[int(PromptKind::YesNo)] = {6};
    window.findChild<QPushButton *>(QStringLiteral("cmdDelete"))->click();
    QCOMPARE(EngineCalls::ConsumerItems(*f->other, "*"), QList<qint32>());
    QTRY_COMPARE(window.StatusText(), QString());
}

void tst_StatusLine::preview(const QString &title)
{
    QFETCH(QString, expected);
    m_server.serve(QStringLiteral("/garden"),
                   "<?xml version=\"1.0\"?><rss version=\"2.0\"><channel><title>Garden</title>"
                   "<item><guid>g</guid><title>Tomatoes</title><description>Red</description></item>"
                   "</channel></rss>");
    auto preview = std::make_unique<frmPreviewSubscription>();
    preview->InitWindow(f->client, nullptr, title, m_server.url(QStringLiteral("/garden")).toString(), false);
    preview->show();
    QTRY_COMPARE_WITH_TIMEOUT(preview->windowTitle(), expected, 15000);
    QCOMPARE(preview->findChild<QLineEdit *>(QStringLiteral("txtTitle"))->text(),
             title.isEmpty() ? QStringLiteral("Garden") : title);
    preview.reset();
    QCOMPARE(f->client->LiveHandleCount(), 0);
}

int main(int argc, char *argv[])
{
    WebArticleView::PrepareProcess();
    QApplication app(argc, argv);
    tst_StatusLine test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_StatusLine.moc"
