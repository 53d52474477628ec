#include "CopyingCallback.h"
#include "DaemonProcess.h"
#include "TestFiles.h"
#include "TestRows.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

using namespace quillon;

// Answers the wire cannot carry in one frame, or that nest deep, still reach the caller over
// the real socket: whole, or as a failure that says why; never silence.
class tst_OversizeAnswers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyAnswerArrives_data();
    void everyAnswerArrives();

private:
    QTemporaryDir m_dir;
};

void tst_OversizeAnswers::everyAnswerArrives_data()
{
    QTest::addColumn<int>("levels");   // outlines nested so deep
    QTest::addColumn<int>("outlines"); // beside each other, with addresses under a long folder
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("error");
    row("1,000 levels", 1000, 1, "OPMLResult", QString());
    row("1,001 levels", 1001, 1, "OPMLResult", "deeper than 1000 levels");
    row("wider than a frame", 1, 7000, "RequestFailed", "larger than the limit");
}

void tst_OversizeAnswers::everyAnswerArrives()
{
    QFETCH(int, levels);
    QFETCH(int, outlines);
    QFETCH(QString, message);
    QFETCH(QString, error);
    // Relative addresses come back resolved against the list's own long path: a list of a few
    // hundred kilobytes makes an answer of over 64 MiB.
    QString folder = m_dir.path();
    for (int i = 0; i < 14; ++i)
        folder += QLatin1Char('/') + QString(250, QLatin1Char('d'));
    QByteArray opml = "<opml><body>" + QByteArray("<outline text=\"x\">").repeated(levels - 1);
    opml += QByteArray("<outline xmlUrl=\"a\" htmlUrl=\"b\" url=\"c\"/>").repeated(outlines);
    opml += QByteArray("</outline>").repeated(levels - 1) + "</body></opml>";
    const QString file = folder + "/list.opml";
    QVERIFY(TestFiles::write(file, opml));

    DaemonProcess daemon;
    QVERIFY2(daemon.start(), qPrintable(daemon.errorText()));
    const SubscribeClientPtr client = daemon.newClient();
    const Handle request = client->NewBag();
    client->SetStringValue(request, "REQUEST", "FETCHOPML");
    client->SetStringValue(request, "URL", QUrl::fromLocalFile(file).toString());
    auto answer = std::make_shared<CopyingCallback>(*client);
    QElapsedTimer clock;
    clock.start();
    client->SubmitRequest(request, answer);
    client->ReleaseHandle(request);
    QTRY_VERIFY_WITH_TIMEOUT(!answer->received.isEmpty(), 60000);
    qInfo() << "answered in" << clock.elapsed() << "ms";
    const BagPtr received = answer->received.first();
    QCOMPARE(received->text("MESSAGE"), message);
    const BagPtr result = received->bag("Result");
    const QString errorText = result ? result->text("ERROR") : received->text("ERROR");
    QVERIFY2(error.isEmpty() ? !errorText.contains(' ') : errorText.contains(error), qPrintable(errorText));
    if (message == "OPMLResult") {
        int depth = 1;
        for (BagPtr outline = std::get<BagPtr>(result->list("SubscriptionList")->at(0));
             outline->list("children"); ++depth)
            outline = std::get<BagPtr>(outline->list("children")->at(0));
        QCOMPARE(depth, 1000);
    }
    QCOMPARE(client->LiveHandleCount(), 0);
}

QTEST_GUILESS_MAIN(tst_OversizeAnswers)
#include "tst_OversizeAnswers.moc"
