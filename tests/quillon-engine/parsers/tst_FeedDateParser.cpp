#include "FeedDateParser.h"
#include "TestRows.h"

#include <QTest>

using namespace quillon;

class tst_FeedDateParser : public QObject
{
    Q_OBJECT

private slots:
    void readsDateForms_data();
    void readsDateForms();
};

void tst_FeedDateParser::readsDateForms_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("utc"); // empty: no date

    row("RFC 822 GMT", "Sat, 07 Sep 2002 00:00:01 GMT", "2002-09-07T00:00:01Z");
    row("EST", "Sat, 07 Sep 2002 00:00:01 EST", "2002-09-07T05:00:01Z");
    row("PDT", "Sat, 07 Sep 2002 00:00:01 PDT", "2002-09-07T07:00:01Z");
    row("+0530", "Sat, 07 Sep 2002 00:00:01 +0530", "2002-09-06T18:30:01Z");
    row("-05:00", "Sat, 07 Sep 2002 00:00:01 -05:00", "2002-09-07T05:00:01Z");
    row("Z, no weekday, no seconds", "7 Sep 2002 13:45 Z", "2002-09-07T13:45:00Z");
    row("military zone", "Sat, 07 Sep 2002 00:00:01 Q", "2002-09-07T00:00:01Z");
    row("two-digit year", "Sat, 07 Sep 02 00:00:01 UT", "2002-09-07T00:00:01Z");
    row("full names, comment", "Saturday, 7 September 2002 10:00:00 +0000 (UTC)", "2002-09-07T10:00:00Z");
    row("no zone means UTC", "Sat, 07 Sep 2002 00:00:01", "2002-09-07T00:00:01Z");
    row("asctime order", "Sat Sep 07 00:00:01 +0200 2002", "2002-09-06T22:00:01Z");
    row("RFC 3339 Z", "2003-12-13T18:30:02Z", "2003-12-13T18:30:02Z");
    row("fraction and offset", "2003-12-13T18:30:02.25+01:00", "2003-12-13T17:30:02Z");
    row("offset crossing midnight", "2003-12-13T18:30:02-0530", "2003-12-14T00:00:02Z");
    row("date only", "2003-12-13", "2003-12-13T00:00:00Z");
    row("basic format", "20031213T183002Z", "2003-12-13T18:30:02Z");
    row("space separator", "2003-12-13 18:30:02 EST", "2003-12-13T23:30:02Z");
    row("empty", "", "");
    row("words", "yesterday afternoon", "");
    row("day out of range", "Sun, 32 Jan 2004 12:00 GMT", "");
    row("month out of range", "2004-13-01T00:00:00Z", "");
    row("bad time", "Sat, 07 Sep 2002 25:61:00 GMT", "");
    // The common form's own reader must agree with the general one at its edges.
    row("common form, offset", "Tue, 14 Nov 2023 22:13:20 -0130", "2023-11-14T23:43:20Z");
    row("common form, lower case", "tue, 14 nov 2023 22:13:20 UTC", "2023-11-14T22:13:20Z");
    row("common form, midnight as 24", "Tue, 14 Nov 2023 24:00:00 GMT", "2023-11-14T23:59:59Z");
    row("common form, 30 February", "Fri, 30 Feb 2024 10:00:00 GMT", "");
    row("common form, day 00", "Tue, 00 Nov 2023 22:13:20 GMT", "");
    row("month where the weekday goes", "Mar, 14 Nov 2023 22:13:20 GMT", "2023-03-14T22:13:20Z");
    row("common form, unknown zone", "Tue, 14 Nov 2023 22:13:20 XYZ", "2023-11-14T22:13:20Z");
    row("unreadable high-bit text", QString::fromUtf8("Πεμ, 29 Ιολ 2004 12:53:00 GMT"), "");
}

void tst_FeedDateParser::readsDateForms()
{
    QFETCH(QString, text);
    QFETCH(QString, utc);

    const QDateTime parsed = FeedDateParser::parse(text);
    if (utc.isEmpty()) {
        QVERIFY2(!parsed.isValid(), qPrintable(parsed.toString(Qt::ISODate)));
        return;
    }
    QVERIFY(parsed.isValid());
    QCOMPARE(parsed.timeSpec(), Qt::UTC);
    QCOMPARE(parsed.toString(Qt::ISODate), utc);
}

QTEST_GUILESS_MAIN(tst_FeedDateParser)
#include "tst_FeedDateParser.moc"
