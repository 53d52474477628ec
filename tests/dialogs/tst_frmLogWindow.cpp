#include "TestEngine.h"
#include "frmLogWindow.h"

#include <QTest>

class tst_frmLogWindow : public QObject
{
    Q_OBJECT

private slots:
    void followsTheEngineLogAsItIsWritten();
};

void tst_frmLogWindow::followsTheEngineLogAsItIsWritten()
{
    TestEngine engine;
    QVERIFY(engine.isReady());
    auto client = engine.newClient();
    client->Log(QStringLiteral("written before the window opened"), 999);

    // The engine names its file; the window needs nothing else to find it.
    const QString file = frmLogWindow::EngineLogFile(*client);
    QVERIFY2(file.endsWith(QLatin1String("/engine.log")), qPrintable(file));
    frmLogWindow window(file);
    window.show();
    QVERIFY(window.shownText().contains(QLatin1String("written before the window opened")));
    client->Log(QStringLiteral("written while it is open"), 999);
    QTRY_VERIFY(window.shownText().contains(QLatin1String("written while it is open")));
    QCOMPARE(window.shownText().count(QLatin1Char('\n')), 1); // two lines, none doubled
    if (const QString shot = qEnvironmentVariable("QUILLON_SHOT"); !shot.isEmpty())
        window.grab().save(shot);
}

QTEST_MAIN(tst_frmLogWindow)
#include "tst_frmLogWindow.moc"
