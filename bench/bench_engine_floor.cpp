// Two pieces of the floor under the engine's fetch round, for the same documents the engine
// fetches: a bare expat pass over every feed, as the engine reads (BareXmlPass.h, nothing kept),
// and the articles they hold written with one prepared SQLite statement into a table laid out
// as the engine's, in WAL mode with one commit per 16 feeds, as the engine commits. Only the
// two timed steps count; reading the files and picking the fields out of them do not.
// Usage: bench_engine_floor <folder of feed-*.xml> <folder for the database>
// Prints key=value lines (CPU milliseconds of this process): xml_cpu_ms, insert_cpu_ms, and
// xml_qt_cpu_ms, the bare pass with QXmlStreamReader, for comparison with earlier figures.
// Under valgrind --tool=callgrind --instr-atstart=no, each timed step is counted and dumped apart.

#include "BareXmlPass.h"
#include "InstructionCount.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QList>
#include <QXmlStreamReader>

#include <sqlite3.h>

#include <cstdio>
#include <ctime>

namespace {

struct Item
{
    QByteArray guid, title, link, pubDate, description;
};

double cpuMsSince(std::clock_t start)
{
    return double(std::clock() - start) * 1000.0 / CLOCKS_PER_SEC;
}

QList<QByteArray> readFeeds(const QString &folder)
{
    QList<QByteArray> documents;
    const QDir dir(folder);
    for (const QString &name : dir.entryList({QStringLiteral("feed-*.xml")}, QDir::Files, QDir::Name)) {
        QFile file(dir.filePath(name));
        if (file.open(QIODevice::ReadOnly))
            documents.append(file.readAll());
    }
    return documents;
}

qint64 barePass(const QList<QByteArray> &documents)
{
    qint64 elements = 0;
    for (const QByteArray &document : documents)
        elements += bareXmlPass(document);
    return elements;
}

QList<Item> itemsOf(const QByteArray &document)
{
    QList<Item> items;
    QXmlStreamReader reader(document);
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement)
            continue;
        const auto name = reader.name();
        if (name == QLatin1String("item")) {
            items.emplace_back();
        } else if (!items.isEmpty() && name != QLatin1String("rss") && name != QLatin1String("channel")) {
            const QByteArray text = reader.readElementText().toUtf8();
            Item &item = items.last();
            QByteArray *field = name == QLatin1String("guid")          ? &item.guid
                                : name == QLatin1String("title")       ? &item.title
                                : name == QLatin1String("link")        ? &item.link
                                : name == QLatin1String("pubDate")     ? &item.pubDate
                                : name == QLatin1String("description") ? &item.description
                                                                       : nullptr;
            if (field)
                *field = text;
        }
    }
    return items;
}

bool exec(sqlite3 *db, const char *sql)
{
    char *message = nullptr;
    if (sqlite3_exec(db, sql, nullptr, nullptr, &message) == SQLITE_OK)
        return true;
    std::fprintf(stderr, "bench_engine_floor: %s: %s\n", sql, message);
    sqlite3_free(message);
    return false;
}

void bind(sqlite3_stmt *statement, int column, const QByteArray &text)
{
    sqlite3_bind_text(statement, column, text.constData(), int(text.size()), SQLITE_STATIC);
}

// The articles table of the engine's schema, without the tables it refers to.
constexpr const char *kSchema =
    "PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL;"
    "CREATE TABLE articles (id INTEGER PRIMARY KEY AUTOINCREMENT, subscription_id INTEGER NOT NULL,"
    " guid TEXT NOT NULL, title TEXT, link TEXT, author TEXT, body TEXT, published TEXT,"
    " fetched_at TEXT, is_read INTEGER NOT NULL DEFAULT 0, enclosure_url TEXT, enclosure_type TEXT,"
    " enclosure_length INTEGER, UNIQUE (subscription_id, guid));"
    "CREATE INDEX articles_by_read_state ON articles(subscription_id, is_read);";

bool insertAll(sqlite3 *db, const QList<QList<Item>> &feeds)
{
    sqlite3_stmt *insert = nullptr;
    if (sqlite3_prepare_v2(db,
                           "INSERT INTO articles (subscription_id, guid, title, link, body, published,"
                           " fetched_at) VALUES (?, ?, ?, ?, ?, ?, ?)",
                           -1, &insert, nullptr) != SQLITE_OK)
        return false;
    static const QByteArray fetchedAt("2026-11-24T12:00:00Z");
    bool ok = true;
    for (qsizetype feed = 0; feed < feeds.size() && ok; ++feed) {
        if (feed % 16 == 0)
            ok = exec(db, "BEGIN");
        for (const Item &item : feeds.at(feed)) {
            sqlite3_bind_int(insert, 1, int(feed + 1));
            bind(insert, 2, item.guid);
            bind(insert, 3, item.title);
            bind(insert, 4, item.link);
            bind(insert, 5, item.description);
            bind(insert, 6, item.pubDate);
            bind(insert, 7, fetchedAt);
            ok = ok && sqlite3_step(insert) == SQLITE_DONE;
            sqlite3_reset(insert);
        }
        if (feed % 16 == 15 || feed + 1 == feeds.size())
            ok = ok && exec(db, "COMMIT");
    }
    sqlite3_finalize(insert);
    return ok;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc < 3) {
        std::fprintf(stderr, "usage: bench_engine_floor <feed folder> <database folder>\n");
        return 2;
    }
    const QList<QByteArray> documents = readFeeds(QString::fromLocal8Bit(argv[1]));
    qint64 bytes = 0;
    for (const QByteArray &document : documents)
        bytes += document.size();

    std::clock_t start = std::clock();
    countFrom();
    const qint64 elements = barePass(documents);
    countUntil("bare XML pass");
    const double xmlMs = cpuMsSince(start);
    start = std::clock();
    for (const QByteArray &document : documents)
        bareQtPass(document);
    const double xmlQtMs = cpuMsSince(start);

    QList<QList<Item>> feeds;
    qsizetype articles = 0;
    for (const QByteArray &document : documents)
        articles += feeds.emplace_back(itemsOf(document)).size();
    const QByteArray path =
        QDir(QString::fromLocal8Bit(argv[2])).filePath(QStringLiteral("floor.sqlite")).toLocal8Bit();
    sqlite3 *db = nullptr;
    start = std::clock();
    countFrom();
    const bool stored =
        sqlite3_open(path.constData(), &db) == SQLITE_OK && exec(db, kSchema) && insertAll(db, feeds);
    sqlite3_close(db);
    countUntil("prepared inserts");
    const double insertMs = cpuMsSince(start);
    if (!stored)
        return 1;
    std::printf("feeds=%lld\nbytes=%lld\nelements=%lld\narticles=%lld\nxml_cpu_ms=%.1f\ninsert_cpu_ms=%.1f\n"
                "xml_qt_cpu_ms=%.1f\n",
                qlonglong(documents.size()), qlonglong(bytes), qlonglong(elements), qlonglong(articles),
                xmlMs, insertMs, xmlQtMs);
    return 0;
}
