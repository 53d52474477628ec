#include "ArticleHtml.h"
#include "FolderPlan.h"
#include "MessageBuilder.h"

#include <QTest>

Q_DECLARE_METATYPE(FolderDefaults)
Q_DECLARE_METATYPE(SubscriptionPlace)

// The folder and content rules, without an engine.
class tst_FolderPlan : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void folderFollowsSettings_data();
    void folderFollowsSettings();
    void themeFallsBackToDefaults();
    void messageIsStableAndFilterable();
};

void tst_FolderPlan::folderFollowsSettings_data()
{
    QTest::addColumn<FolderDefaults>("defaults");
    QTest::addColumn<SubscriptionPlace>("place");
    QTest::addColumn<QString>("expected");

    SubscriptionPlace news;
    news.id = 7;
    news.title = QStringLiteral("Daily News");
    news.category = QStringLiteral("Tech~~~Linux");
    FolderDefaults plain;
    QTest::newRow("category path under the root") << plain << news << "\\Tech\\Linux\\Daily News";

    FolderDefaults top;
    top.topFolder = QStringLiteral("\\Feeds");
    top.subFolder = true;
    top.subFolderTitle = QStringLiteral("-237237");
    QTest::newRow("top folder, sub-folder with its default name")
        << top << news << "\\Feeds\\Corvell for Outlook\\Tech\\Linux\\Daily News";

    SubscriptionPlace titled = news;
    titled.folderTitle = QStringLiteral("my.site/feed");
    titled.category = QString();
    QTest::newRow("folder title, separators made harmless") << plain << titled << "\\my_site_feed";

    SubscriptionPlace specific = news;
    specific.specificFolder = true;
    specific.specificPath = QStringLiteral("\\Inbox/Reading");
    QTest::newRow("specific folder with a named folder") << top << specific << "\\Inbox\\Reading\\Daily News";
    specific.namedFolder = false;
    QTest::newRow("specific folder itself") << top << specific << "\\Inbox\\Reading";
    specific.specificPath = QStringLiteral("-237237");
    QTest::newRow("specific folder never picked") << plain << specific << "\\Tech\\Linux\\Daily News";

    SubscriptionPlace nameless;
    nameless.id = 3;
    nameless.title = QStringLiteral("  ");
    nameless.url = QStringLiteral("http://x.org/rss");
    QTest::newRow("no title: the address") << plain << nameless << "\\http:__x_org_rss";
}

void tst_FolderPlan::folderFollowsSettings()
{
    QFETCH(FolderDefaults, defaults);
    QFETCH(SubscriptionPlace, place);
    QFETCH(QString, expected);
    QCOMPARE(FolderPlan::pathText(FolderPlan::folderFor(defaults, place)), expected);
    QCOMPARE(FolderPlan::parsePath(expected), FolderPlan::folderFor(defaults, place));
}

void tst_FolderPlan::themeFallsBackToDefaults()
{
    FolderDefaults defaults;
    SubscriptionPlace place;
    QCOMPARE(FolderPlan::themeFor(defaults, place), FolderPlan::Theme::Both);
    defaults.theme = QStringLiteral("Plain");
    QCOMPARE(FolderPlan::themeFor(defaults, place), FolderPlan::Theme::Plain);
    place.theme = QStringLiteral("full");
    QCOMPARE(FolderPlan::themeFor(defaults, place), FolderPlan::Theme::Full);
    place.theme = QStringLiteral("Default");
    QCOMPARE(FolderPlan::themeFor(defaults, place), FolderPlan::Theme::Plain);
}

void tst_FolderPlan::messageIsStableAndFilterable()
{
    const ArticleHtml html;
    const MessageBuilder builder(html);
    ArticleMessage a;
    a.articleId = 12;
    a.subscriptionId = 4;
    a.guid = QStringLiteral("urn:1");
    a.subject = QStringLiteral("Grüße ~DATA_ARTICLEBODY~");
    a.link = QStringLiteral("http://example.com/1");
    a.bodyHtml = QStringLiteral("<p>First &amp; foremost</p><p>Second</p>");
    a.date = QDateTime(QDate(2024, 5, 1), QTime(10, 0), Qt::UTC);
    a.feedTitle = QStringLiteral("Example Feed");
    a.feedUrl = QStringLiteral("http://example.com/rss");
    a.enclosures = {{QStringLiteral("http://example.com/a.mp3"), QStringLiteral("audio/mpeg"), 2048}};

    const QByteArray both = builder.build(a);
    QVERIFY(both.contains("Message-Id: <" + MessageBuilder::messageId(a) + ">"));
    QVERIFY(both.contains("From: Example Feed <feed-4@quillon.invalid>"));
    QVERIFY(both.contains("Date: Wed, 01 May 2024 10:00:00 +0000"));
    QVERIFY(both.contains("X-Feed-URL: http://example.com/rss"));
    QVERIFY(both.contains("multipart/alternative"));
    QVERIFY(both.contains("Subject: =?")); // the subject is encoded
    QVERIFY(!both.contains("\r\n"));
    QVERIFY(builder.build(a, MessageBuilder::LineEnds::Network).contains("\r\n"));
    QCOMPARE(MessageBuilder::textPart(a),
             QStringLiteral("First & foremost\n\nSecond\n\nhttp://example.com/1\nEnclosure: "
                            "http://example.com/a.mp3 (audio/mpeg)\n"));
    // A placeholder inside the article is not filled again.
    QVERIFY(html.page(a).contains(QStringLiteral("~DATA_ARTICLEBODY~")));
    QVERIFY(html.page(a).contains(QStringLiteral("href=\"http://example.com/a.mp3\"")));

    // Same feed and key, same Message-ID; anything else, another.
    ArticleMessage again = a;
    again.articleId = 99;
    QCOMPARE(MessageBuilder::messageId(again), MessageBuilder::messageId(a));
    again.guid = QStringLiteral("urn:2");
    QVERIFY(MessageBuilder::messageId(again) != MessageBuilder::messageId(a));

    a.theme = FolderPlan::Theme::Plain;
    QVERIFY(!builder.build(a).contains("text/html"));
    a.theme = FolderPlan::Theme::Full;
    QVERIFY(!builder.build(a).contains("text/plain"));
}

QTEST_GUILESS_MAIN(tst_FolderPlan)
#include "tst_FolderPlan.moc"
