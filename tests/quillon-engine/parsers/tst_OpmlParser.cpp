#include "OpmlCatalog.h"
#include "OpmlParser.h"

#include <QTest>

using namespace quillon;

class tst_OpmlParser : public QObject
{
    Q_OBJECT

private slots:
    void readsNestedOutlines();
    void keepsOutlinesReadBeforeAnError();
    void survivesHostileLists_data();
    void survivesHostileLists();
};

// What the conformance lists do not reach: how outlines show, a declared character set, and
// folders without a name.
void tst_OpmlParser::readsNestedOutlines()
{
    const QByteArray opml = R"(<?xml version="1.0" encoding="ISO-8859-1"?>
        <opml version="1.0"><head><title>My feeds</title></head><body>
          <outline text="News" title="Daily news">
            <outline text="Wire" description="Fast" xmlUrl="http://wire.example/rss" htmlUrl="http://wire.example/"/>
            <outline text="" title=""><outline text="Deep" xmlUrl="http://deep.example/atom"/></outline>
          </outline>
          <outline text="More lists" type="include" url="http://lists.example/more.opml"/>
          <outline text="Caf&#233; )"
                            "\xe0"
                            R"( la carte" type="rss" xmlUrl="http://wire.example/rss"/>
        </body></opml>)";
    const OpmlDocument document = OpmlParser::parse(opml);
    QVERIFY2(document.ok(), qPrintable(document.errorText));
    QCOMPARE(document.title, QStringLiteral("My feeds"));
    const OpmlOutline &folder = document.outlines.at(0);
    QCOMPARE(folder.displayTitle(), QStringLiteral("Daily news")); // title before text
    QVERIFY(!folder.isFeed());
    const OpmlOutline &wire = folder.children.at(0);
    QVERIFY(wire.isFeed());
    QCOMPARE(wire.displayTitle(), QStringLiteral("Wire"));
    QCOMPARE(wire.description, QStringLiteral("Fast"));
    QVERIFY(!document.outlines.at(1).isFeed());
    QCOMPARE(document.outlines.at(2).text, QStringLiteral("Caf\u00e9 \u00e0 la carte"));
    // A folder without a name adds no level to the catalog.
    QCOMPARE(OpmlCatalog::fromDocument(document).feeds.at(1).categories, (QList<QStringList>{{"News"}}));
}

void tst_OpmlParser::keepsOutlinesReadBeforeAnError()
{
    const QByteArray opml = "<opml><body><outline text=\"Folder\"><outline text=\"A\" xmlUrl=\"http://a/\"/>"
                            "<outline text=\"B\" xmlUrl=\"http://b/\"/><outline text=\"C\" xmlUrl=";
    const OpmlDocument document = OpmlParser::parse(opml);
    QCOMPARE(document.error, ParseError::NotWellFormed);
    QCOMPARE(document.outlines.size(), 1);
    QCOMPARE(document.outlines.at(0).children.size(), 2);

    QCOMPARE(OpmlParser::parse("<rss version=\"2.0\"/>").error, ParseError::UnknownFormat);
    QCOMPARE(OpmlParser::parse("").error, ParseError::Empty);
}

void tst_OpmlParser::survivesHostileLists_data()
{
    QTest::addColumn<int>("levels");
    QTest::addColumn<int>("kept");
    QTest::addColumn<bool>("refused");
    QTest::newRow("1,000 levels, read whole") << 1000 << 1000 << false;
    QTest::newRow("1,001 levels, refused") << 1001 << 1000 << true;
    QTest::newRow("100,000 levels, refused without recursion") << 100000 << 1000 << true;
}

void tst_OpmlParser::survivesHostileLists()
{
    QFETCH(int, levels);
    QFETCH(int, kept);
    QFETCH(bool, refused);
    const QByteArray deep = "<opml><body>" + QByteArray("<outline text=\"x\">").repeated(levels) +
                            QByteArray("</outline>").repeated(levels) + "</body></opml>";
    const OpmlDocument document = OpmlParser::parse(deep);
    QCOMPARE(document.error, refused ? ParseError::TooDeep : ParseError::None);
    QCOMPARE(document.errorText.contains(QLatin1String("deeper than 1000 levels")), refused);
    int depth = 1;
    for (const OpmlOutline *outline = &document.outlines.at(0); !outline->children.isEmpty();
         outline = &outline->children.at(0))
        ++depth;
    QCOMPARE(depth, kept);
    QVERIFY(OpmlCatalog::fromDocument(document).feeds.isEmpty());
}

QTEST_GUILESS_MAIN(tst_OpmlParser)
#include "tst_OpmlParser.moc"
