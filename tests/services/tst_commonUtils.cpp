#include "commonUtils.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_commonUtils : public QObject
{
    Q_OBJECT

private slots:
    void textToBoolAcceptsOnlyTheKnownSpellings();
    void intervalsMultiplyByTheirUnitAndRefuseOverflow();
    void secondsShowInTheLargestExactUnit_data();
    void secondsShowInTheLargestExactUnit();
};

void tst_commonUtils::textToBoolAcceptsOnlyTheKnownSpellings()
{
    for (const char *text : {"True", "1", "true", "TRUE", "YES", "yes"})
        QVERIFY2(TextToBool(QString::fromLatin1(text)), text);
    for (const char *text : {"Yes", "", "0", "tRUE", " yes", "2"})
        QVERIFY2(!TextToBool(QString::fromLatin1(text)), text);
    QCOMPARE(TextToInt(u" -237237 "_s), -237237);
    QCOMPARE(TextToInt(u"abc"_s), 0);
    QCOMPARE(TextToInt(u"99999999999"_s), 0);
}

void tst_commonUtils::intervalsMultiplyByTheirUnitAndRefuseOverflow()
{
    QCOMPARE(IntervalToSeconds(2, UnitDays), 172800);
    QCOMPARE(IntervalToSeconds(5, UnitMinutes), 300);
    QCOMPARE(IntervalToSeconds(17, 9), 17);
    QCOMPARE(IntervalToSeconds(24855, UnitDays), 24855 * 86400);
    QVERIFY_THROWS_EXCEPTION(IntervalOverflow, (void)IntervalToSeconds(24856, UnitDays));
    QVERIFY_THROWS_EXCEPTION(IntervalOverflow, (void)IntervalToSeconds(-40000000, UnitMinutes));
}

void tst_commonUtils::secondsShowInTheLargestExactUnit_data()
{
    QTest::addColumn<qint32>("seconds");
    QTest::addColumn<qint32>("amount");
    QTest::addColumn<int>("unit");
    QTest::newRow("two hours") << 7200 << 2 << int(UnitHours);
    QTest::newRow("one day") << 86400 << 1 << int(UnitDays);
    QTest::newRow("ninety minutes") << 5400 << 90 << int(UnitMinutes);
    QTest::newRow("engine default") << -1 << 1 << int(UnitHours);
    QTest::newRow("36 hours") << 36 * 3600 << 36 << int(UnitHours);
    // Seconds that are no whole minute round to the nearest one, as the editor's field does.
    QTest::newRow("an hour less a second") << 3599 << 60 << int(UnitMinutes);
    QTest::newRow("ninety seconds") << 90 << 2 << int(UnitMinutes);
    QTest::newRow("half a minute over rounds up") << 150 << 3 << int(UnitMinutes);
}

void tst_commonUtils::secondsShowInTheLargestExactUnit()
{
    QFETCH(qint32, seconds);
    QFETCH(qint32, amount);
    QFETCH(int, unit);
    const TimeDisplay shown = SecondsToDisplay(seconds);
    QCOMPARE(shown.amount, amount);
    QCOMPARE(shown.unitIndex, unit);
    // What an editor shows converts back to what was stored.
    if (seconds > 0 && seconds % 60 == 0)
        QCOMPARE(IntervalToSeconds(shown.amount, shown.unitIndex), seconds);
}

QTEST_GUILESS_MAIN(tst_commonUtils)
#include "tst_commonUtils.moc"
