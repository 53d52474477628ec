#include "EngineFixture.h"
#include "SearchSources.h"
#include "TestFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

using namespace quillon;
using EngineCalls::Texts;

namespace {
const QByteArray kFeed =
    "<?xml version=\"1.0\"?><rss version=\"2.0\"><channel><title>Preview &amp; Co</title>"
    "<description>What we write</description><link>http://example.com/</link>"
    "<item><title>First</title><link>http://example.com/1</link>"
    "<description>&lt;b&gt;One&lt;/b&gt;</description><author>ann@example.com</author>"
    "<pubDate>Wed, 01 May 2024 10:00:00 GMT</pubDate></item>"
    "<item><title>Second</title><link>http://example.com/2</link>"
    "<description>Two</description></item></channel></rss>";

const QByteArray kOpml =
    "<?xml version=\"1.0\"?><opml version=\"2.0\"><head><title>My Lists</title></head><body>"
    "<outline text=\"Tech\" title=\"Tech\">"
    "<outline text=\"A\" title=\"Feed A\" type=\"rss\" xmlUrl=\"http://a.example/rss\"/>"
    "<outline text=\"B\" type=\"rss\" xmlUrl=\"b.xml\" description=\"Bee\"/>"
    "</outline>"
    "<outline text=\"Top\" xmlUrl=\"http://top.example/feed\" htmlUrl=\"http://top.example/\"/>"
    "</body></opml>";

// Limits as numbers or as text; a source without {keywords} is dropped.
const QByteArray kShippedSources =
    R"({"sources": [{"guid": "g1", "title": "One", "template": "http://x/?q={keywords}",)"
    R"( "defaultLimit": 10, "minLimit": 1, "maxLimit": "50"},)"
    R"( {"guid": "g2", "title": "Two", "template": "http://y/?q={keywords}"},)"
    R"( {"guid": "bad", "title": "No keywords", "template": "http://z/"}]})";
const QByteArray kUserSources =
    R"([{"guid": "G2", "title": "Two, mine", "template": "http://y2/?q={keywords}"}])";
const char *const kLocalSource = R"({"sources": [{"guid": "local", "title": "Local",)"
                                 R"( "template": "%1?q={keywords}&n={limit}", "defaultLimit": 10,)"
                                 R"( "minLimit": 5, "maxLimit": 50}]})";

BagPtr entry(const ListPtr &list, int index)
{
    return list && index < list->size() ? std::get<BagPtr>(list->at(index)) : PropertyBag::create();
}

// Every feed of an outline list as its folder path and address ("Work~~~Projects~~~http://..."),
// with a title when it has one ("... = Title") and its other categories ("... [a,b]").
QStringList feedPaths(const ListPtr &outlines, const QString &folder = {})
{
    QStringList paths;
    for (qsizetype i = 0; outlines && i < outlines->size(); ++i) {
        const BagPtr outline = entry(outlines, int(i));
        const QString here = folder + (folder.isEmpty() ? "" : "~~~");
        if (outline->contains("xmlUrl")) {
            QString path = here + outline->text("xmlUrl");
            if (outline->contains("title"))
                path += " = " + outline->text("title");
            if (outline->contains("category"))
                path += " [" + outline->text("category") + "]";
            paths.append(path);
        } else {
            const QString title = outline->text(outline->contains("title") ? "title" : "text");
            paths += feedPaths(outline->list("children"), here + title);
        }
    }
    return paths;
}

// A newsboat urls file as people write them: tags quoted or bare, a title tag, a hidden tag,
// comments, a search feed, commands and an address given twice (one feed).
const QByteArray kNewsboatUrls = "# news\n"
                                 "http://a.example/rss \"tech news\" linux \"~A's \\\"best\\\" feed\"\n"
                                 "  \"http://b.example/feed\"\t!hidden   # \"not a tag\"\r\n"
                                 "query:Unread:unread = \"yes\"\n"
                                 "\n"
                                 "http://c.example/atom tech ~Cee\n"
                                 "http://d.example/x#part\n"
                                 "exec:~/bin/feed.sh tech\n"
                                 "filter:~/bin/clean.py:http://e.example/rss \"tech news\" tech news\n"
                                 "http://c.example/atom other\n";

const QByteArray kLifereaList =
    "<?xml version=\"1.0\"?><opml version=\"1.0\"><head><title>Liferea Feed List Export</title></head><body>"
    "<outline title=\"Work\" text=\"Work\" type=\"folder\" expanded=\"true\">"
    "<outline title=\"Projects\" text=\"Projects\" type=\"folder\">"
    "<outline title=\"Build\" text=\"Build\" type=\"rss\" xmlUrl=\"http://build.example/rss\"/></outline>"
    "<outline title=\"Script\" text=\"Script\" type=\"rss\" xmlUrl=\"|/usr/bin/feedgen\"/></outline>"
    "<outline title=\"Unread\" text=\"Unread\" type=\"vfolder\"/>"
    "<outline title=\"Top\" text=\"Top\" type=\"rss\" xmlUrl=\"http://top.example/rss\"/>"
    "</body></opml>";

const QByteArray kAkregatorList =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?><opml version=\"1.0\"><head><title>Akregator Feeds</title>"
    "</head><body><outline isOpen=\"true\" id=\"1\" text=\"KDE\">"
    "<outline isOpen=\"false\" id=\"2\" text=\"Planets\">"
    "<outline title=\"Planet KDE\" text=\"Planet KDE\" type=\"rss\" id=\"3\""
    " xmlUrl=\"https://planet.kde.org/global/atom.xml\" htmlUrl=\"https://planet.kde.org/\"/></outline>"
    "<outline title=\"Dot\" text=\"Dot\" type=\"rss\" id=\"4\" xmlUrl=\"https://dot.kde.org/rss.xml\"/>"
    "</outline></body></opml>";
} // namespace

class tst_EngineRequests : public EngineTestCase
{
    Q_OBJECT

private:
    BagPtr fetchOpml(const QString &address)
    {
        return m_engine->request({{"REQUEST", "FETCHOPML"}, {"URL", address}});
    }

    QStringList availableReaders()
    {
        const BagPtr answer = m_engine->request({{"REQUEST", "LIST"}, {"LIST", "IMPORT"}});
        QStringList available;
        const ListPtr readers = answer->bag("Result")->list("IMPORT");
        for (qsizetype i = 0; i < readers->size(); ++i) {
            if (entry(readers, int(i))->text("available") == u"1")
                available.append(entry(readers, int(i))->text("id"));
        }
        return available;
    }
    QStringList readerFeeds(const QString &reader)
    {
        const BagPtr answer = fetchOpml(reader);
        if (answer->text("MESSAGE") != u"OPMLResult")
            return {answer->text("MESSAGE")};
        return feedPaths(answer->bag("Result")->list("SubscriptionList"));
    }

    QTemporaryDir m_dir;
    QTemporaryDir m_home; // the user's home, where the other readers keep their lists

private Q_SLOTS:
    void initTestCase();
    void previewAnswersWithTheFeedOrAnError();
    void fetchOpmlReadsFilesWebListsAndReaders();
    void readersOfThisDesktopImportWithTheirFolders();
    void searchSubscriptionsFetchTheirSource();
    void shippedDirectoryAndSourcesAreUsable();
};

void tst_EngineRequests::initTestCase()
{
    EngineTestCase::initTestCase();
    qputenv("HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_home.filePath(".config")));
    qunsetenv("XDG_DATA_HOME");
}

void tst_EngineRequests::previewAnswersWithTheFeedOrAnError()
{
    m_server.serve("/feed", kFeed);
    BagPtr answer = m_engine->preview(url("/feed"));
    QVERIFY(answer);
    QCOMPARE(answer->text("MESSAGE"), "PreviewResult");
    const BagPtr details = answer->bag("Result")->bag("PREFLIGHT_DETAILS");
    QVERIFY(details);
    QCOMPARE(Texts(details, {"ITEMCOUNT", "TITLE", "DESCRIPTION", "URL"}),
             QStringList({"2", "Preview & Co", "What we write", url("/feed")}));
    const BagPtr first = entry(details->list("ITEMS"), 0);
    QCOMPARE(Texts(first, {"SUBJECT", "URL", "BODY", "DATE", "AUTHOR"}),
             QStringList(
                 {"First", "http://example.com/1", "<b>One</b>", "2024-05-01T10:00:00Z", "ann@example.com"}));
    QCOMPARE(entry(details->list("ITEMS"), 1)->text("DATE"), kMissingText);
    // A preview stores nothing.
    const Handle all = m_engine->client->ListConsumerItems("*", "NEWS");
    QCOMPARE(m_engine->client->ListCount(all), 0);
    m_engine->client->ReleaseHandle(all);

    // A web page leads to its site's feed; a document of another kind is no feed.
    m_server.serve("/page", "<html><body>not a feed</body></html>", "text/html");
    QCOMPARE(m_engine->preview(url("/page"))->text("MESSAGE"), "PreviewResult");
    m_server.serve("/note", "<?xml version=\"1.0\"?><note>not a feed</note>", "text/xml");
    for (const char *path : {"/missing", "/note"}) {
        answer = m_engine->preview(url(path));
        QVERIFY(answer);
        QCOMPARE(answer->text("MESSAGE"), "RequestFailed");
        QVERIFY(!answer->contains("Result"));
    }
    QCOMPARE(answer->text("ERROR"), "Error: The document is not a feed (its root element is <note>).");
    QCOMPARE(m_engine->preview(url("/missing"))->text("ERROR"), "Error: HTTP 404 Not Found");
}

void tst_EngineRequests::fetchOpmlReadsFilesWebListsAndReaders()
{
    const QString path = m_dir.filePath("My Lists/subs.opml");
    QVERIFY(TestFiles::write(path, kOpml));
    // As the import hands it over: blanks as %20, nothing else escaped.
    const QString loopback = "file://loopback/" + QString(path).replace(" ", "%20");
    BagPtr answer = fetchOpml(loopback);
    QCOMPARE(answer->text("MESSAGE"), "OPMLResult");
    BagPtr result = answer->bag("Result");
    QCOMPARE(Texts(result, {"URL", "TITLE"}), QStringList({loopback, "My Lists"}));
    const ListPtr top = result->list("SubscriptionList");
    QCOMPARE(top->size(), 2);
    QCOMPARE(Texts(entry(top, 0), {"title", "xmlUrl"}), QStringList({"Tech", kMissingText}));
    const ListPtr children = entry(top, 0)->list("children");
    QCOMPARE(children->size(), 2);
    QCOMPARE(Texts(entry(children, 0), {"title", "xmlUrl"}), QStringList({"Feed A", "http://a.example/rss"}));
    // Without a title the consumer falls back to text.
    QCOMPARE(Texts(entry(children, 1), {"title", "text", "description"}),
             QStringList({kMissingText, "B", "Bee"}));
    QVERIFY(!entry(children, 0)->contains("children"));
    QCOMPARE(entry(top, 1)->text("htmlUrl"), "http://top.example/");

    // From the web, relative feed addresses hang from the list's own address.
    m_server.serve("/lists/subs.opml", kOpml, "text/x-opml");
    result = fetchOpml(url("/lists/subs.opml"))->bag("Result");
    QCOMPARE(entry(entry(result->list("SubscriptionList"), 0)->list("children"), 1)->text("xmlUrl"),
             url("/lists/b.xml"));

    // A list from the web names no local file: such addresses are left out, web ones kept.
    m_server.serve("/local.opml", "<opml><body><outline text=\"L\" xmlUrl=\"file:///etc/passwd\""
                                  " htmlUrl=\"http://w.example/\"/><outline text=\"Q\" type=\"link\""
                                  " url=\"quillon-data:directory/root.opml\"/><outline text=\"E\""
                                  " xmlUrl=\"\"/><outline text=\"F\" xmlUrl=\"feed:file:///etc/passwd\"/>"
                                  "</body></opml>");
    const ListPtr local = fetchOpml(url("/local.opml"))->bag("Result")->list("SubscriptionList");
    QVERIFY(!entry(local, 0)->contains("xmlUrl") && !entry(local, 1)->contains("url"));
    QVERIFY(!entry(local, 3)->contains("xmlUrl"));
    QVERIFY(entry(local, 2)->contains("xmlUrl")); // present though empty: still a feed
    QCOMPARE(entry(local, 0)->text("htmlUrl"), "http://w.example/");

    // A feed offered for import is a list of one.
    m_server.serve("/single.rss", kFeed);
    result = fetchOpml(url("/single.rss"))->bag("Result");
    QCOMPARE(entry(result->list("SubscriptionList"), 0)->text("xmlUrl"), url("/single.rss"));
    QCOMPARE(entry(result->list("SubscriptionList"), 0)->text("title"), "Preview & Co");

    const QStringList failing = {"newsgator", "intravnews", url("/nothing"),
                                 "file://loopback/" + m_dir.filePath("gone.opml")};
    for (const QString &address : failing) {
        answer = fetchOpml(address);
        QCOMPARE(answer->text("MESSAGE"), "RequestFailed");
        QVERIFY2(!answer->text("ERROR").isEmpty() && !answer->contains("Result"), qPrintable(address));
    }
}

void tst_EngineRequests::readersOfThisDesktopImportWithTheirFolders()
{
    const BagPtr answer = m_engine->request({{"REQUEST", "LIST"}, {"LIST", "IMPORT"}});
    QCOMPARE(answer->text("MESSAGE"), "ListResult");
    const ListPtr readers = answer->bag("Result")->list("IMPORT");
    QStringList listed;
    for (qsizetype i = 0; i < readers->size(); ++i)
        listed << entry(readers, int(i))->text("id") + ":" + entry(readers, int(i))->text("title");
    QCOMPARE(listed, QStringList({"newsgator:NewsGator", "intravnews:IntraVnews", "newsboat:Newsboat",
                                  "liferea:Liferea", "akregator:Akregator"}));
    const Handle outlines = m_engine->client->ListReaderSubscriptions("newsgator");
    QCOMPARE(m_engine->client->ListCount(outlines), 0);
    m_engine->client->ReleaseHandle(outlines);

    QDir(m_home.path()).removeRecursively();
    QVERIFY(QDir().mkpath(m_home.path()));
    QCOMPARE(availableReaders(), QStringList());
    QCOMPARE(readerFeeds("newsboat"), QStringList("RequestFailed"));

    // Each feed under the folder of its first tag, the other tags kept as its categories.
    const QString config = m_home.filePath(".config");
    QVERIFY(TestFiles::write(config + "/newsboat/urls", kNewsboatUrls));
    QCOMPARE(availableReaders(), QStringList("newsboat"));
    QCOMPARE(readerFeeds("newsboat"),
             QStringList({"tech news~~~http://a.example/rss = A's \"best\" feed [linux]",
                          "tech news~~~http://e.example/rss [tech,news]", "hidden~~~http://b.example/feed",
                          "tech~~~http://c.example/atom = Cee", "http://d.example/x#part"}));
    // newsboat's own order: the folder in the home beats the configuration folder.
    QVERIFY(TestFiles::write(m_home.filePath(".newsboat/urls"), "http://old.example/rss\n"));
    QCOMPARE(readerFeeds("NEWSBOAT"), QStringList("http://old.example/rss"));
    const BagPtr untitled = entry(fetchOpml("newsboat")->bag("Result")->list("SubscriptionList"), 0);
    QCOMPARE(untitled->text("text"), "http://old.example/rss");

    // Liferea: folders kept, search folders and command sources left out; else its older home.
    QVERIFY(TestFiles::write(config + "/liferea/feedlist.opml", kLifereaList));
    QCOMPARE(readerFeeds("liferea"), QStringList({"Work~~~Projects~~~http://build.example/rss = Build",
                                                  "http://top.example/rss = Top"}));
    QVERIFY(QFile::remove(config + "/liferea/feedlist.opml"));
    QVERIFY(TestFiles::write(m_home.filePath(".liferea_1.4/feedlist.opml"), kOpml));
    QVERIFY(TestFiles::write(m_home.filePath(".liferea_1.10/feedlist.opml"), kLifereaList));
    QCOMPARE(readerFeeds("liferea").size(), 2);

    // Akregator in the data folder, wherever XDG_DATA_HOME points.
    QVERIFY(TestFiles::write(m_home.filePath(".local/share/akregator/data/feeds.opml"), kAkregatorList));
    QCOMPARE(availableReaders(), QStringList({"newsboat", "liferea", "akregator"}));
    const QStringList akregator{"KDE~~~Planets~~~https://planet.kde.org/global/atom.xml = Planet KDE",
                                "KDE~~~https://dot.kde.org/rss.xml = Dot"};
    QCOMPARE(readerFeeds("akregator"), akregator);
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_home.filePath("data")));
    QCOMPARE(readerFeeds("akregator"), QStringList("RequestFailed"));
    QVERIFY(TestFiles::write(m_home.filePath("data/akregator/data/feeds.opml"), kAkregatorList.left(300)));
    QCOMPARE(fetchOpml("akregator")->text("MESSAGE"), "OPMLResult"); // what was read
    qunsetenv("XDG_DATA_HOME");

    // The feeds alone, as the client library lists them.
    const Handle feeds = m_engine->client->ListReaderSubscriptions("akregator");
    QCOMPARE(m_engine->client->ListCount(feeds), 2);
    m_engine->client->ReleaseHandle(feeds);
}

void tst_EngineRequests::searchSubscriptionsFetchTheirSource()
{
    // The shipped sources, and the user's own file beside the store, which replaces by guid.
    const QString shipped = m_dir.filePath("data");
    QVERIFY(TestFiles::write(shipped + "/searchsources.json", kShippedSources));
    QVERIFY(TestFiles::write(m_engine->engine.dataFolder() + "/searchsources.json", kUserSources));
    m_engine->engine.core().setQuillonDataFolder(shipped);
    BagPtr answer = m_engine->request({{"REQUEST", "LIST"}, {"LIST", "SEARCHSOURCES"}});
    const ListPtr sources = answer->bag("Result")->list("SEARCHSOURCES");
    QCOMPARE(sources->size(), 2);
    QCOMPARE(Texts(entry(sources, 0), {"guid", "defaultLimit", "maxLimit"}), QStringList({"g1", "10", "50"}));
    QCOMPARE(Texts(entry(sources, 1), {"title", "minLimit"}), QStringList({"Two, mine", kMissingText}));

    answer = m_engine->request({{"REQUEST", "LIST"}, {"LIST", "FROB"}});
    QCOMPARE(answer->text("MESSAGE"), "RequestFailed");

    // A search subscription fetches its source with the limits held to its bounds.
    const QString data = m_dir.filePath("search");
    QVERIFY(
        TestFiles::write(data + "/searchsources.json", QString(kLocalSource).arg(url("/search")).toUtf8()));
    m_engine->engine.core().setQuillonDataFolder(data);
    const SearchSources local = SearchSources::load({data + "/searchsources.json"});
    const SearchSources::Source &source = local.sources().first();
    QList<int> limits;
    for (const char *asked : {"500", "2", "", "n/a"})
        limits.append(SearchSources::clampLimit(source, asked));
    QCOMPARE(limits, QList<int>({50, 5, 10, 10}));

    // The address the add wizard makes with BagToText becomes a fetch of the template.
    const Handle bag = m_engine->client->NewBag();
    m_engine->client->SetStringValue(bag, "guid", "local");
    m_engine->client->SetStringValue(bag, "keywords", "c++ & qt");
    m_engine->client->SetStringValue(bag, "limit", "500");
    const QString address = m_engine->client->BagToText(bag);
    m_engine->client->ReleaseHandle(bag);
    QVERIFY(address.startsWith("search?"));
    m_server.serve("/search?q=c%2B%2B%20%26%20qt&n=50", kFeed);

    const BagPtr preview = m_engine->preview(address);
    QCOMPARE(preview->text("MESSAGE"), "PreviewResult");
    const qint32 id = m_engine->add(address, "Search Local for 'c++ & qt'");
    m_engine->engine.core().startUpdating();
    QTRY_COMPARE(m_engine->itemBag(id)->text("LASTUPDATESTATUS"), "OK: 2 items, 2 new");
    QCOMPARE(m_server.requestCount("/search?q=c%2B%2B%20%26%20qt&n=50"), 2);

    const BagPtr unknown = m_engine->preview("search?guid=elsewhere&keywords=x");
    QCOMPARE(unknown->text("ERROR"), "Error: unknown search source 'elsewhere'");
}

void tst_EngineRequests::shippedDirectoryAndSourcesAreUsable()
{
    const QString shipped = qEnvironmentVariable("QUILLON_SOURCE_DIR") + "/data/QuillonData";
    QVERIFY(QFileInfo::exists(shipped + "/directory/root.opml"));
    m_engine->engine.core().setQuillonDataFolder(shipped);

    const QString browse = EngineCalls::Setting(*m_engine->client, "ENGINE", QString(), "OEM_Browse_URL");
    QCOMPARE(browse, "quillon-data:directory/root.opml");

    const ListPtr lists = fetchOpml(browse)->bag("Result")->list("SubscriptionList");
    QVERIFY(lists->size() >= 4);
    for (const PropertyValue &value : lists->items()) {
        const BagPtr list = std::get<BagPtr>(value);
        const BagPtr answer = fetchOpml(list->text("xmlUrl"));
        QVERIFY2(answer->contains("Result"), qPrintable(list->text("xmlUrl")));
        const ListPtr feeds = answer->bag("Result")->list("SubscriptionList");
        QVERIFY2(feeds->size() >= 5 && feeds->size() <= 10, qPrintable(list->text("title")));
        for (const PropertyValue &feed : feeds->items()) {
            const QUrl address(std::get<BagPtr>(feed)->text("xmlUrl"));
            QVERIFY2(address.scheme().startsWith("http") && !address.host().isEmpty(),
                     qPrintable(address.toString()));
            QVERIFY(!std::get<BagPtr>(feed)->text("title").isEmpty());
        }
    }

    QStringList problems;
    const SearchSources sources = SearchSources::load({shipped + "/searchsources.json"}, &problems);
    QVERIFY2(problems.isEmpty(), qPrintable(problems.join('\n')));
    QVERIFY(sources.sources().size() >= 3);
    for (const SearchSources::Source &source : sources.sources()) {
        const QUrl search(
            sources.searchUrl("search?guid=" + source.guid + "&keywords=feed%20readers", nullptr));
        QVERIFY2(search.scheme() == "https" && search.toEncoded().contains("feed%20readers"),
                 qPrintable(source.title));
    }
}

QTEST_GUILESS_MAIN(tst_EngineRequests)
#include "tst_EngineRequests.moc"
