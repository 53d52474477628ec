#include "FeedParser.h"

#include <QStringEncoder>
#include <QTest>

using namespace quillon;

namespace {

QByteArray rssWithItems(int count)
{
    QByteArray xml = "<?xml version=\"1.0\"?><rss version=\"2.0\"><channel><title>Channel</title>";
    for (int i = 1; i <= count; ++i)
        xml += "<item><title>Item " + QByteArray::number(i) + "</title><guid>id-" + QByteArray::number(i) +
               "</guid></item>";
    return xml + "</channel></rss>";
}

QByteArray encoded(const QString &text, const char *encoding)
{
    QStringEncoder encoder(encoding);
    return encoder.encode(text);
}

} // namespace

class tst_FeedParser : public QObject
{
    Q_OBJECT

private slots:
    void keepsItemsReadBeforeAnError();
    void refusesHostileDocuments();
    void choosesCharacterSetByPrecedence_data();
    void choosesCharacterSetByPrecedence();
    void mendsEntitiesAndCharactersFeedsGetWrong();
    void resolvesRelativeLinks();
    void readsEnclosuresDatesAndAuthors();
    void reportsDocumentsThatAreNoFeeds();
};

void tst_FeedParser::keepsItemsReadBeforeAnError()
{
    const QByteArray whole = rssWithItems(3);
    const QByteArray truncated = whole.left(whole.indexOf("<guid>id-3"));

    const ParsedFeed feed = FeedParser::parse(truncated);
    QCOMPARE(feed.error, ParseError::NotWellFormed);
    QVERIFY(feed.errorText.startsWith("line 1, column"));
    QCOMPARE(feed.title.value, "Channel");
    QCOMPARE(feed.items.size(), 2); // the third was cut off and is not trusted
    QCOMPARE(feed.items.at(1).guid, "id-2");

    const ParsedFeed mismatched = FeedParser::parse(rssWithItems(2).replace("</channel>", "</chanel>"));
    QCOMPARE(mismatched.error, ParseError::NotWellFormed);
    QCOMPARE(mismatched.items.size(), 2);
}

void tst_FeedParser::refusesHostileDocuments()
{
    // Exponential: ten levels of ten references each.
    QByteArray laughs = "<?xml version=\"1.0\"?><!DOCTYPE rss [<!ENTITY lol0 \"lol\">";
    for (int level = 1; level <= 9; ++level) {
        laughs += "<!ENTITY lol" + QByteArray::number(level) + " \"";
        for (int i = 0; i < 10; ++i)
            laughs += "&lol" + QByteArray::number(level - 1) + ';';
        laughs += "\">";
    }
    laughs += "]><rss version=\"2.0\"><channel><title>&lol9;</title></channel></rss>";
    const ParsedFeed bomb = FeedParser::parse(laughs);
    QCOMPARE(bomb.error, ParseError::EntityExpansion);

    // Quadratic: one large entity referenced many times.
    QByteArray quadratic =
        "<!DOCTYPE rss [<!ENTITY big \"" + QByteArray(60000, 'x') + "\">]><rss><channel><title>";
    for (int i = 0; i < 2000; ++i)
        quadratic += "&big;";
    quadratic += "</title></channel></rss>";
    QVERIFY(!FeedParser::parse(quadratic).ok());
    // A declaration that cannot be sized is not read at all.
    QCOMPARE(FeedParser::parse("<!DOCTYPE rss [<!ENTITY a \"x\"> junk ]><rss>&a;</rss>").error,
             ParseError::NotWellFormed);
    QCOMPARE(FeedParser::parse("<!DOCTYPE rss [<!ENTITY % p \"<!ENTITY b 'x'>\"> %p; ]><rss>&b;</rss>").error,
             ParseError::NotWellFormed);

    // Nesting far deeper than any stack should follow, inside an item and inside its text.
    const QByteArray deep = QByteArray("<rss><channel><item><x>").repeated(1) +
                            QByteArray("<x>").repeated(200000) + "</item></channel></rss>";
    QVERIFY(!FeedParser::parse(deep).ok());
    const QByteArray deepText = "<rss><channel><item><description>" + QByteArray("<p>").repeated(200000) +
                                QByteArray("</p>").repeated(200000) + "</description></item></channel></rss>";
    QCOMPARE(FeedParser::parse(deepText).items.size(), 1);
}

void tst_FeedParser::choosesCharacterSetByPrecedence_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("contentType");
    QTest::addColumn<QString>("title");
    QTest::addColumn<bool>("fallback");

    const QString cyrillic = "Новости";
    const QString greek = "Ειδήσεις";
    auto rss = [](const char *declared, const QByteArray &title) {
        return QByteArray("<?xml version=\"1.0\" encoding=\"") + declared + "\"?><rss><channel><title>" +
               title + "</title></channel></rss>";
    };
    QTest::newRow("declaration") << rss("ISO-8859-7", encoded(greek, "ISO-8859-7")) << QString() << greek
                                 << false;
    QTest::newRow("HTTP charset beats the declaration")
        << rss("ISO-8859-1", encoded(cyrillic, "windows-1251")) << "text/xml; charset=\"windows-1251\""
        << cyrillic << false;
    QByteArray utf16 =
        "\xFF\xFE" + encoded(QString::fromLatin1(rss("UTF-16", "X")).replace(u'X', greek), "UTF-16LE");
    QTest::newRow("byte-order mark beats HTTP")
        << utf16 << "application/rss+xml; charset=koi8-r" << greek << false;
    QTest::newRow("UTF-8, read as it came")
        << rss("UTF-8", cyrillic.toUtf8()) << QString() << cyrillic << false;
    QTest::newRow("UTF-8 byte-order mark")
        << "\xEF\xBB\xBF" + rss("utf-8", greek.toUtf8()) << QString() << greek << false;
    QTest::newRow("declared UTF-8 that is not") << rss("UTF-8", "caf\xE9") << QString() << "café" << true;
    QTest::newRow("unknown charset") << rss("x-no-such-set", "plain") << QString() << "plain" << true;
}

void tst_FeedParser::choosesCharacterSetByPrecedence()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, contentType);
    QFETCH(QString, title);
    QFETCH(bool, fallback);

    const ParsedFeed feed = FeedParser::parse(bytes, contentType);
    QCOMPARE(feed.title.value, title);
    QCOMPARE(feed.encodingFallback, fallback);
}

void tst_FeedParser::mendsEntitiesAndCharactersFeedsGetWrong()
{
    const QByteArray xml = "<rss><channel><title>Caf&eacute;&nbsp;&amp;&#32;Bar</title><item>"
                           "<title>AT&T &bogus; \x0B done</title>"
                           "<description><![CDATA[keep &nbsp; as written]]></description>"
                           "</item></channel></rss>";
    const ParsedFeed feed = FeedParser::parse(xml);
    QCOMPARE(feed.title.value, "Café\u00A0& Bar");
    QCOMPARE(feed.items.at(0).title.value, "AT&T &bogus;  done");
    QCOMPARE(feed.items.at(0).summary.value, "keep &nbsp; as written");
    QCOMPARE(feed.repairs, 5);

    // Prefixes used without a declaration are declared on the root; media: keeps its meaning.
    const QByteArray undeclared = "<?xml version=\"1.0\"?>\n<!-- note --><rss version=\"2.0\"><channel><item>"
                                  "<title>Episode</title><itunes:author>Ann</itunes:author>"
                                  "<media:content url=\"http://example.org/e.mp3\" type=\"audio/mpeg\"/>"
                                  "</item><item><title>Next</title></item></channel></rss>";
    const ParsedFeed podcast = FeedParser::parse(undeclared);
    QCOMPARE(podcast.items.size(), 2);
    QCOMPARE(podcast.items.at(0).enclosures.at(0).url, "http://example.org/e.mp3");
    QCOMPARE(podcast.repairs, 2);
    // Read as they came, these would pass the reader unmended: an external DTD, a long reference.
    const QByteArray tail = "<rss><channel><title>a&nbsp;&#0000000065;</title></channel></rss>";
    QCOMPARE(FeedParser::parse("<!DOCTYPE rss SYSTEM \"r.dtd\">" + tail).title.value, "a\u00A0&#0000000065;");
    QCOMPARE(FeedParser::parse(QByteArray(tail).replace("&nbsp;", "")).title.value, "a&#0000000065;");
    QCOMPARE(FeedParser::parse("<?pi <x:y?><rss/>").repairs, 1); // and what looks like a prefix
}

void tst_FeedParser::resolvesRelativeLinks()
{
    const QByteArray atom = R"(<feed xmlns="http://www.w3.org/2005/Atom" xml:base="http://example.org/blog/">
        <link href="/"/>
        <entry xml:base="2024/">
          <link rel="alternate" type="text/html" href="post.html"/>
          <link rel="enclosure" href="media/a.mp3" xml:base="http://cdn.example.net/" length="7"/>
          <content type="html">&lt;img src="pic.png"&gt;</content>
        </entry></feed>)";
    const ParsedFeed feed = FeedParser::parse(atom, {}, QUrl("http://ignored.example/feed"));
    QCOMPARE(feed.link, "http://example.org/");
    const ParsedItem &entry = feed.items.at(0);
    QCOMPARE(entry.link, "http://example.org/blog/2024/post.html");
    QCOMPARE(entry.enclosures.at(0).url, "http://cdn.example.net/media/a.mp3");
    QCOMPARE(entry.content.value, "<img src=\"http://example.org/blog/2024/pic.png\" />");

    const QByteArray rss =
        "<rss><channel><link>home.html</link><item><link>p/1</link></item></channel></rss>";
    const ParsedFeed fromAddress = FeedParser::parse(rss, {}, QUrl("https://site.example/rss/feed.xml"));
    QCOMPARE(fromAddress.link, "https://site.example/rss/home.html");
    QCOMPARE(fromAddress.items.at(0).link, "https://site.example/rss/p/1");
}

void tst_FeedParser::readsEnclosuresDatesAndAuthors()
{
    const QByteArray rss = R"(<rss version="2.0" xmlns:media="http://search.yahoo.com/mrss/"
        xmlns:dc="http://purl.org/dc/elements/1.1/"><channel><item>
        <enclosure url="http://e.example/a.mp3" length="123" type="audio/mpeg"/>
        <media:content url="http://e.example/a.mp3" type="audio/mpeg"/>
        <media:group><media:content url="http://e.example/b.mp4" fileSize="9" type="video/mp4"/></media:group>
        <pubDate>Tue, 10 Jun 2003 04:00:00 EST</pubDate>
        <dc:creator>Jo Writer</dc:creator>
        </item></channel></rss>)";
    const ParsedFeed feed = FeedParser::parse(rss);
    QCOMPARE(feed.format, "rss20");
    const ParsedItem &item = feed.items.at(0);
    QCOMPARE(item.enclosures.size(), 2); // the same file offered twice counts once
    QCOMPARE(item.enclosures.at(0).length, 123);
    QCOMPARE(item.enclosures.at(1).type, "video/mp4");
    QCOMPARE(item.enclosures.at(1).length, 9);
    QCOMPARE(item.published, QDateTime(QDate(2003, 6, 10), QTime(9, 0), Qt::UTC));
    QCOMPARE(item.author, "Jo Writer");

    const QByteArray atom = R"(<feed xmlns="http://www.w3.org/2005/Atom"><entry>
        <author><name>Ann</name><uri>http://ann.example/</uri></author>
        <published>2003-12-13T18:30:02+05:30</published><updated>2003-12-14T00:00:00Z</updated>
        <source><title>Elsewhere</title><link href="http://elsewhere.example/"/></source>
        </entry></feed>)";
    const ParsedItem entry = FeedParser::parse(atom).items.value(0);
    QCOMPARE(entry.author, "Ann");
    QCOMPARE(entry.published, QDateTime(QDate(2003, 12, 13), QTime(13, 0, 2), Qt::UTC));
    QCOMPARE(entry.updated, QDateTime(QDate(2003, 12, 14), QTime(0, 0), Qt::UTC));
    QVERIFY(entry.title.value.isEmpty());
    QVERIFY(entry.link.isEmpty());
}

void tst_FeedParser::reportsDocumentsThatAreNoFeeds()
{
    QCOMPARE(FeedParser::parse(QByteArray()).error, ParseError::Empty);
    QCOMPARE(FeedParser::parse("   just words  ").error, ParseError::Empty);
    const ParsedFeed page = FeedParser::parse("<html><head><title>Not a feed</title></head></html>");
    QCOMPARE(page.error, ParseError::UnknownFormat);
    QVERIFY(page.errorText.contains("<html>"));
    QCOMPARE(FeedParser::parse("<rss><channel></channel></rss><rss/>").error, ParseError::NotWellFormed);
}

QTEST_GUILESS_MAIN(tst_FeedParser)
#include "tst_FeedParser.moc"
