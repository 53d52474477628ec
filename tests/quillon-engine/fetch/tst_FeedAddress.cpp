#include "FeedAddress.h"
#include "TestRows.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace quillon;

class tst_FeedAddress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void addressesAsUsersAndImportsWriteThem_data();
    void addressesAsUsersAndImportsWriteThem();

private:
    QTemporaryDir m_dir;
};

void tst_FeedAddress::addressesAsUsersAndImportsWriteThem_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("data");     // the data folder quillon-data: addresses live in
    QTest::addColumn<QString>("expected"); // the address, or the local file; empty: refused
    row("http", "http://example.com/rss", "", "http://example.com/rss");
    row("blanks around", "  https://example.com/a.xml \t", "", "https://example.com/a.xml");
    row("bare host", "example.com/rss", "", "http://example.com/rss");
    row("host and port", "localhost:8080/feed", "", "http://localhost:8080/feed");
    row("feed://", "feed://example.com/rss", "", "http://example.com/rss");
    row("feed:https", "feed:https://example.com/rss", "", "https://example.com/rss");
    row("other scheme", "gopher://example.com/", "", "");
    row("marker", "-237237", "", "");
    row("empty", "", "", "");

    // A file name with a blank and a literal "%41" in it.
    const QString plain = m_dir.filePath("My Feeds/a%41.opml");
    QFile file(plain);
    QVERIFY(QDir().mkpath(QFileInfo(plain).path()) && file.open(QIODevice::WriteOnly));
    // As the import makes it: blanks become %20, nothing else is escaped.
    row("loopback as the import writes it", "file://loopback/" + QString(plain).replace(' ', "%20"), "",
        plain);
    // Another writer may escape everything; that is read too when the plain reading finds nothing.
    row("loopback escaped throughout",
        QString::fromLatin1("file://loopback/" + QUrl::toPercentEncoding(plain, "/")), "", plain);
    row("file URL", QUrl::fromLocalFile(plain).toString(), "", plain);
    row("loopback without a file", "file://loopback/", "", "");

    const QString data = "/opt/quillon/QuillonData";
    row("data folder", "quillon-data:directory/root.opml", data, data + "/directory/root.opml");
    row("data folder, escaped", "quillon-data:/directory/a%20b.opml", data, data + "/directory/a b.opml");
    row("data folder, climbing out", "quillon-data:../secrets.txt", data, "");
    row("data folder, climbing out later", "quillon-data:directory/../../x", data, "");
    row("data folder unknown", "quillon-data:root.opml", "", "");
}

void tst_FeedAddress::addressesAsUsersAndImportsWriteThem()
{
    QFETCH(QString, address);
    QFETCH(QString, data);
    QFETCH(QString, expected);
    const FeedAddress::Resolved resolved = FeedAddress::resolve(address, data);
    QCOMPARE(resolved.ok(), !expected.isEmpty());
    if (!resolved.ok())
        QVERIFY(!resolved.error.isEmpty());
    else
        QCOMPARE(resolved.url.isLocalFile() ? resolved.url.toLocalFile() : resolved.url.toString(), expected);
}

QTEST_GUILESS_MAIN(tst_FeedAddress)
#include "tst_FeedAddress.moc"
