// Feed parser throughput against the floor of a bare expat pass over the same bytes (and Qt's),
// for the mix of feeds and for each kind alone: RSS with escaped HTML (a third with
// content:encoded in CDATA), RSS whose descriptions are HTML in CDATA (as gen_feeds.py writes),
// and Atom with xhtml content.
// Usage: bench_parser [feeds=1000] [items=20] [rounds=5] [one kind: mix, escaped, cdata, atom]
#include "BareXmlPass.h"
#include "FeedParser.h"

#include <QCoreApplication>
#include <QRandomGenerator>

#include <cstdio>
#include <ctime>
#include <functional>

using namespace quillon;

namespace {

const char *const kWords[] = {"engine", "feed",    "outlook", "subscription", "article", "release", "update",
                              "market", "weather", "science", "reader",       "podcast", "episode", "review",
                              "notes",  "garden",  "travel",  "design",       "music",   "history"};

QByteArray words(QRandomGenerator &random, int count)
{
    QByteArray out;
    for (int i = 0; i < count; ++i) {
        if (i > 0)
            out += ' ';
        out += kWords[random.bounded(int(std::size(kWords)))];
    }
    return out;
}

// An escaped HTML paragraph or three, as blogs put into <description>.
QByteArray escapedHtml(QRandomGenerator &random, int paragraphs)
{
    QByteArray out;
    for (int p = 0; p < paragraphs; ++p)
        out += "&lt;p&gt;" + words(random, 40) + " &lt;a href=\"http://example.com/" + words(random, 1) +
               "\"&gt;" + words(random, 3) + "&lt;/a&gt; &amp;amp; " + words(random, 25) + "&lt;/p&gt;";
    return out;
}

QByteArray rssFeed(QRandomGenerator &random, int feed, int items)
{
    QByteArray xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<rss version=\"2.0\" "
                     "xmlns:dc=\"http://purl.org/dc/elements/1.1/\" "
                     "xmlns:content=\"http://purl.org/rss/1.0/modules/content/\">\n<channel>\n<title>" +
                     words(random, 4) + "</title>\n<link>http://site" + QByteArray::number(feed) +
                     ".example/</link>\n<description>" + words(random, 12) + "</description>\n";
    for (int i = 0; i < items; ++i) {
        const QByteArray link =
            "http://site" + QByteArray::number(feed) + ".example/" + QByteArray::number(i);
        xml += "<item>\n<title>" + words(random, 7) + "</title>\n<link>" + link + "</link>\n<guid>" + link +
               "</guid>\n<pubDate>Tue, 10 Jun 2003 04:00:00 GMT</pubDate>\n<dc:creator>" + words(random, 2) +
               "</dc:creator>\n<description>" + escapedHtml(random, 2) + "</description>\n";
        if (i % 3 == 0)
            xml += "<content:encoded><![CDATA[<p>" + words(random, 120) + "</p><img src=\"/i/" +
                   QByteArray::number(i) + ".png\"><p>" + words(random, 80) + "</p>]]></content:encoded>\n";
        if (i % 5 == 0)
            xml += "<enclosure url=\"" + link + ".mp3\" length=\"123456\" type=\"audio/mpeg\"/>\n";
        xml += "</item>\n";
    }
    return xml + "</channel>\n</rss>\n";
}

// HTML in CDATA, the way many blog engines and gen_feeds.py write descriptions.
QByteArray rssCdataFeed(QRandomGenerator &random, int feed, int items)
{
    QByteArray xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<rss version=\"2.0\">\n<channel>\n<title>" +
                     words(random, 4) + "</title>\n<link>http://site" + QByteArray::number(feed) +
                     ".example/</link>\n<description>" + words(random, 12) + "</description>\n";
    for (int i = 0; i < items; ++i) {
        const QByteArray link =
            "http://site" + QByteArray::number(feed) + ".example/posts/" + QByteArray::number(i);
        xml += "<item>\n<title>" + words(random, 6) + "</title>\n<link>" + link +
               "</link>\n<guid isPermaLink=\"false\">urn:synthetic:" + QByteArray::number(feed) + ":" +
               QByteArray::number(i) +
               "</guid>\n<pubDate>Tue, 14 Nov 2023 22:13:20 GMT</pubDate>\n"
               "<description><![CDATA[<p>" +
               words(random, 8) + " <b>" + words(random, 2) + "</b> " + words(random, 10) + ".</p><p>" +
               words(random, 6) + " <a href=\"" + link + "\">" + words(random, 3) + "</a> " +
               words(random, 7) + ".</p><ul><li>" + words(random, 4) + "</li><li>" + words(random, 4) +
               "</li><li><i>" + words(random, 3) + "</i></li></ul><p>" + words(random, 6) + ".</p><p>" +
               words(random, 6) + ".</p>]]></description>\n</item>\n";
    }
    return xml + "</channel>\n</rss>\n";
}

QByteArray atomFeed(QRandomGenerator &random, int feed, int entries)
{
    QByteArray xml =
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<feed xmlns=\"http://www.w3.org/2005/Atom\">\n"
        "<title>" +
        words(random, 4) + "</title>\n<link href=\"http://blog" + QByteArray::number(feed) +
        ".example/\"/>\n<id>tag:blog" + QByteArray::number(feed) +
        ".example,2024:feed</id>\n<updated>2024-05-01T10:00:00Z</updated>\n";
    for (int i = 0; i < entries; ++i) {
        xml += "<entry>\n<title type=\"html\">" + words(random, 7) +
               "</title>\n<link rel=\"alternate\" "
               "type=\"text/html\" href=\"http://blog" +
               QByteArray::number(feed) + ".example/" + QByteArray::number(i) +
               "\"/>\n<id>tag:blog.example,2024:" + QByteArray::number(i) +
               "</id>\n<published>2024-05-01T10:00:00+02:00</published>\n<updated>2024-05-02T10:00:00Z</"
               "updated>\n"
               "<author><name>" +
               words(random, 2) + "</name></author>\n<summary>" + words(random, 30) +
               "</summary>\n<content type=\"xhtml\"><div xmlns=\"http://www.w3.org/1999/xhtml\"><p>" +
               words(random, 150) + " <a href=\"more.html\">more</a></p></div></content>\n</entry>\n";
    }
    return xml + "</feed>\n";
}

using FeedMaker = QByteArray (*)(QRandomGenerator &, int, int);

QList<QByteArray> makeFeeds(int count, int items, FeedMaker only = nullptr)
{
    QRandomGenerator random(20240501);
    QList<QByteArray> feeds;
    for (int f = 0; f < count; ++f) {
        if (only)
            feeds.append(only(random, f, items));
        else
            feeds.append(f % 10 < 7 ? rssFeed(random, f, items) : atomFeed(random, f, items));
    }
    return feeds;
}

// Best of several rounds, in milliseconds of processor time: the figure that stays put on a
// machine shared with other work.
double bestMs(int rounds, const std::function<void()> &pass)
{
    double best = 1e30;
    for (int r = 0; r < rounds; ++r) {
        const std::clock_t start = std::clock();
        pass();
        best = std::min(best, double(std::clock() - start) * 1000.0 / CLOCKS_PER_SEC);
    }
    return best;
}

// Times the passes over the feeds and prints one line: the parser against a bare expat pass,
// the engine's reader, and against a bare QXmlStreamReader pass, which it read with before.
void compare(const char *kind, const QList<QByteArray> &feeds, int rounds)
{
    qint64 bytes = 0;
    for (const QByteArray &feed : feeds)
        bytes += feed.size();
    const double bareMs = bestMs(rounds, [&] {
        for (const QByteArray &feed : feeds)
            bareXmlPass(feed);
    });
    const double qtMs = bestMs(rounds, [&] {
        for (const QByteArray &feed : feeds)
            bareQtPass(feed);
    });
    qint64 parsedItems = 0;
    const double parserMs = bestMs(rounds, [&] {
        parsedItems = 0;
        for (const QByteArray &feed : feeds)
            parsedItems += FeedParser::parse(feed).items.size();
    });
    const double mb = double(bytes) / 1e6;
    std::printf(
        "%-12s %6.1f MB  bare pass %6.1f ms, Qt's %6.1f ms  parser %6.1f ms (%6.1f MB/s, %lld items)  "
        "%.2fx the bare pass, %.2fx Qt's\n",
        kind, mb, bareMs, qtMs, parserMs, mb / (parserMs / 1e3), static_cast<long long>(parsedItems),
        parserMs / bareMs, parserMs / qtMs);
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    const int feedCount = args.size() > 1 ? args.at(1).toInt() : 1000;
    const int items = args.size() > 2 ? args.at(2).toInt() : 20;
    const int rounds = args.size() > 3 ? args.at(3).toInt() : 5;

    const QString only = args.size() > 4 ? args.at(4) : QString();
    const auto wanted = [&only](const char *kind) { return only.isEmpty() || only == QLatin1String(kind); };

    std::printf("%d feeds x %d items per kind, best of %d rounds, CPU time\n", feedCount, items, rounds);
    if (wanted("mix"))
        compare("mix 70/30", makeFeeds(feedCount, items), rounds);
    if (wanted("escaped"))
        compare("rss escaped", makeFeeds(feedCount, items, rssFeed), rounds);
    if (wanted("cdata"))
        compare("rss cdata", makeFeeds(feedCount, items, rssCdataFeed), rounds);
    if (wanted("atom"))
        compare("atom xhtml", makeFeeds(feedCount, items, atomFeed), rounds);
    return 0;
}
