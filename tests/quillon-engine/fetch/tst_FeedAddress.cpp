#include "FeedAddress.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace quillon;

class tst_FeedAddress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void webAddressesAsUsersWriteThem_data();
    void webAddressesAsUsersWriteThem();
    void loopbackFilesKeepTheirNames();
    void dataFolderDocumentsStayInside();
};

void tst_FeedAddress::webAddressesAsUsersWriteThem_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("expected"); // empty: refused

    QTest::newRow("http") << "http://example.com/rss"
                          << "http://example.com/rss";
    QTest::newRow("blanks around") << "  https://example.com/a.xml \t"
                                   << "https://example.com/a.xml";
    QTest::newRow("bare host") << "example.com/rss"
                               << "http://example.com/rss";
    QTest::newRow("host and port") << "localhost:8080/feed"
                                   << "http://localhost:8080/feed";
    QTest::newRow("feed://") << "feed://example.com/rss"
                             << "http://example.com/rss";
    QTest::newRow("feed:https") << "feed:https://example.com/rss"
                                << "https://example.com/rss";
    QTest::newRow("other scheme") << "gopher://example.com/"
                                  << "";
    QTest::newRow("marker") << "-237237"
                            << "";
    QTest::newRow("empty") << ""
                           << "";
}

void tst_FeedAddress::webAddressesAsUsersWriteThem()
{
    QFETCH(QString, address);
    QFETCH(QString, expected);
    const FeedAddress::Resolved resolved = FeedAddress::resolve(address, QString());
    QCOMPARE(resolved.ok(), !expected.isEmpty());
    if (resolved.ok())
        QCOMPARE(resolved.url.toString(), expected);
    else
        QVERIFY(!resolved.error.isEmpty());
}

void tst_FeedAddress::loopbackFilesKeepTheirNames()
{
    QTemporaryDir dir;
    const QString plain = dir.filePath(QStringLiteral("My Feeds/a%41.opml")); // a literal "%41"
    QVERIFY(QDir().mkpath(QFileInfo(plain).path()));
    QFile file(plain);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();

    // As the import makes it: blanks become %20, nothing else is escaped.
    QString loopback = QStringLiteral("file://loopback/") + QString(plain).replace(QLatin1Char(' '), "%20");
    QCOMPARE(FeedAddress::resolve(loopback, QString()).url.toLocalFile(), plain);

    // Another writer may escape everything; that is read too when the plain reading finds nothing.
    const QString encoded =
        QString::fromLatin1(QUrl::toPercentEncoding(dir.filePath("My Feeds/a%41.opml"), "/"));
    QCOMPARE(FeedAddress::resolve(QStringLiteral("file://loopback/") + encoded, QString()).url.toLocalFile(),
             plain);
    QCOMPARE(FeedAddress::resolve(QUrl::fromLocalFile(plain).toString(), QString()).url.toLocalFile(), plain);
    QVERIFY(!FeedAddress::resolve(QStringLiteral("file://loopback/"), QString()).ok());
}

void tst_FeedAddress::dataFolderDocumentsStayInside()
{
    const QString data = QStringLiteral("/opt/quillon/QuillonData");
    QCOMPARE(FeedAddress::resolve(QStringLiteral("quillon-data:directory/root.opml"), data).url.toLocalFile(),
             data + QStringLiteral("/directory/root.opml"));
    QCOMPARE(
        FeedAddress::resolve(QStringLiteral("quillon-data:/directory/a%20b.opml"), data).url.toLocalFile(),
        data + QStringLiteral("/directory/a b.opml"));
    QVERIFY(!FeedAddress::resolve(QStringLiteral("quillon-data:../secrets.txt"), data).ok());
    QVERIFY(!FeedAddress::resolve(QStringLiteral("quillon-data:directory/../../x"), data).ok());
    QVERIFY(!FeedAddress::resolve(QStringLiteral("quillon-data:root.opml"), QString()).ok());
}

QTEST_GUILESS_MAIN(tst_FeedAddress)
#include "tst_FeedAddress.moc"
