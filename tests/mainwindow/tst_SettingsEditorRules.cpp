#include "CommonValues.h"
#include "FieldError.h"
#include "MinimumFrequency.h"
#include "PropertyBag.h"
#include "SearchUrl.h"
#include "SettingsEditorRules.h"
#include "TimeField.h"

#include <QTest>

class tst_SettingsEditorRules : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void commonValueIsSharedValueOrMixedMarker();
    void typedTimesMustBeWholeNumbers_data();
    void typedTimesMustBeWholeNumbers();
    void storedTimesChooseOptionsAndShownValues();
    void searchAddressesAndLimits();
};

void tst_SettingsEditorRules::commonValueIsSharedValueOrMixedMarker()
{
    using CommonValues::Common;
    QCOMPARE((QList<qint32>{Common(QList<qint32>{3600, 3600}), Common(QList<qint32>{3600, 3600, 7200}),
                            Common(QList<qint32>{})}),
             (QList<qint32>{3600, CommonValues::kNothingCommon, quillon::kMissing}));
    QCOMPARE((QStringList{Common(QStringList{"Plain", "Plain"}), Common(QStringList{"Plain", "plain"}),
                          Common(QStringList{})}),
             (QStringList{"Plain", "NothingCommon", "-237237"}));
}

void tst_SettingsEditorRules::typedTimesMustBeWholeNumbers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("unit");
    QTest::addColumn<int>("seconds"); // -1: refused
    QTest::newRow("one day") << "1" << 2 << 86400;
    QTest::newRow("blanks around") << " 90 " << 0 << 5400;
    QTest::newRow("other unit is seconds") << "45" << 7 << 45;
    QTest::newRow("empty") << "" << 0 << -1;
    QTest::newRow("letters") << "abc" << 0 << -1;
    QTest::newRow("fraction") << "1.5" << 1 << -1;
    QTest::newRow("sign") << "-5" << 0 << -1;
    QTest::newRow("beyond 32 bits") << "99999999999" << 0 << -1;
    QTest::newRow("overflows in seconds") << "30000" << 2 << -1;
}

void tst_SettingsEditorRules::typedTimesMustBeWholeNumbers()
{
    QFETCH(QString, text);
    QFETCH(int, unit);
    QFETCH(int, seconds);
    if (seconds >= 0) {
        QCOMPARE(TimeField::ToSeconds(text, unit, "the update frequency"), seconds);
        return;
    }
    try {
        (void)TimeField::ToSeconds(text, unit, "the update frequency");
        QFAIL("accepted");
    } catch (const FieldError &error) {
        QVERIFY2(error.message().contains("the update frequency"), qPrintable(error.message()));
    }
}

void tst_SettingsEditorRules::storedTimesChooseOptionsAndShownValues()
{
    using R = SettingsEditorRules;
    const qint32 mixed = CommonValues::kNothingCommon;
    using enum PairChoice;
    QCOMPARE((QList<PairChoice>{R::FrequencyChoice(-1), R::FrequencyChoice(quillon::kMissing),
                                R::FrequencyChoice(0), R::FrequencyChoice(mixed), R::DeletionChoice(-1, -1),
                                R::DeletionChoice(-1, 0), R::DeletionChoice(86400, mixed)}),
             (QList<PairChoice>{Default, Default, Custom, None, Default, Custom, None}));
    QCOMPARE((QList<qint32>{R::FrequencyShown(0, 1800), R::FrequencyShown(mixed, 1800),
                            R::FrequencyShown(600, 1800)}),
             (QList<qint32>{1800, 1800, 600}));

    const auto never = R::DeletionShown(0, 259200);
    const auto custom = R::DeletionShown(86400, 259200);
    QVERIFY(!never.checked && custom.checked);
    QCOMPARE((QList<qint32>{never.seconds, custom.seconds}), (QList<qint32>{259200, 86400}));

    QVERIFY(MinimumFrequency::Below(299));
    QVERIFY(!MinimumFrequency::Below(300));
}

void tst_SettingsEditorRules::searchAddressesAndLimits()
{
    QVERIFY(SearchUrl::IsSearchUrl("search?guid=a&keywords=b"));
    QVERIFY(!SearchUrl::IsSearchUrl("Search?guid=a"));
    QVERIFY(!SearchUrl::IsSearchUrl("http://example.org/search"));

    const SearchUrl parsed =
        SearchUrl::Parse("search?guid=%7Bsrc%7D&keywords=cats%20%26%20dogs%2Bmore&limit=20");
    QCOMPARE((QStringList{parsed.guid, parsed.keywords, parsed.limit}),
             (QStringList{"{src}", "cats & dogs+more", "20"}));
    QCOMPARE(SearchUrl::Parse("search").guid, QString());

    for (const char *none : {"", " ", "0", "-237237"})
        QVERIFY2(!SearchUrl::LimitCounts(none), none);
    QVERIFY(SearchUrl::LimitCounts("25"));

    const SearchSource bounded{"g", "t", "25", "10", "100"};
    const SearchSource unbounded{"g", "t", "25", "0", "-237237"};
    QCOMPARE((QList<int>{SearchUrl::ClampLimit(5, bounded), SearchUrl::ClampLimit(500, bounded),
                         SearchUrl::ClampLimit(50, bounded), SearchUrl::ClampLimit(500, unbounded)}),
             (QList<int>{10, 100, 50, 500}));
}

QTEST_GUILESS_MAIN(tst_SettingsEditorRules)
#include "tst_SettingsEditorRules.moc"
