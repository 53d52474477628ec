#include "ArticleView.h"
#include "EngineClientTest.h"
#include "LocalHttpServer.h"
#include "TestFiles.h"
#include "TestRows.h"
#include "WebArticleView.h"
#include "frmPreviewSubscription.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTreeWidget>

namespace {
QByteArray feed(int items)
{
    QString out = QStringLiteral("<?xml version=\"1.0\"?><rss version=\"2.0\"><channel><title>Garden</title>"
                                 "<description>Notes from the garden</description>");
    for (int i = 0; i < items; ++i) {
        // The first body tries to retitle the page from a script; scripts never run here.
        const QString body = i == 0
                                 ? QStringLiteral("&lt;p&gt;Tomatoes&lt;/p&gt;&lt;script&gt;document.title="
                                                  "'changed by the feed'&lt;/script&gt;")
                                 : QStringLiteral("&lt;p&gt;Body %1&lt;/p&gt;").arg(i);
        out +=
            QStringLiteral("<item><guid>g%1</guid><title>Article %1</title><link>http://127.0.0.1:9/%1</link>"
                           "<description>%2</description></item>")
                .arg(i)
                .arg(body);
    }
    return (out + QStringLiteral("</channel></rss>")).toUtf8();
}
} // namespace

// The preview against the real engine, a local feed server and the real embedded browser.
class tst_frmPreviewSubscription : public EngineClientTest
{
    Q_OBJECT

private:
    frmPreviewSubscription &open(const QString &path, const QString &title = QStringLiteral("Garden"));
    template <typename T> T *child(const char *name)
    {
        return m_preview->findChild<T *>(QLatin1String(name));
    }

    std::unique_ptr<frmPreviewSubscription> m_preview;
    LocalHttpServer m_server;

private Q_SLOTS:
    void initTestCase();
    void cleanup()
    {
        m_preview.reset();
        EngineClientTest::cleanup();
    }
    void showsTheArticlesInTheRealView();
    void feedThatCannotBeShownAlertsAndCloses();
    void addClosesWithItsResult_data();
    void addClosesWithItsResult();
    void imagesWaitForTheReaderAndTheArticleShowsItsDetails();
    void clicksFollowOnlyWebLinks_data();
    void clicksFollowOnlyWebLinks();
};

void tst_frmPreviewSubscription::initTestCase()
{
    EngineClientTest::initTestCase();
    QVERIFY(m_server.listen());
    m_server.serve("/garden", feed(3));
    m_server.serve("/empty", feed(0));
    m_server.serve("/away", "<html><body>A page the user went to</body></html>", "text/html");
}

frmPreviewSubscription &tst_frmPreviewSubscription::open(const QString &path, const QString &title)
{
    m_preview = std::make_unique<frmPreviewSubscription>();
    m_preview->InitWindow(m_client, nullptr, title, m_server.url(path).toString(), false);
    m_preview->show();
    return *m_preview;
}

void tst_frmPreviewSubscription::showsTheArticlesInTheRealView()
{
    frmPreviewSubscription &preview = open(QStringLiteral("/garden"));
    QSignalSpy navigated(&preview.View(), &ArticleView::NavigationComplete);
    auto *articles = child<QTreeWidget>("grdArticles");
    QTRY_COMPARE_WITH_TIMEOUT(articles->topLevelItemCount(), 3, 15000);
    QCOMPARE(child<QLineEdit>("txtCount")->text(), QStringLiteral("3"));
    QCOMPARE(child<QLabel>("lblDescription")->text(), QStringLiteral("Notes from the garden"));
    QVERIFY(!child<QLabel>("txtLoading")->isVisible());

    // The first article is written beside the templates and drawn by the real view.
    QTRY_VERIFY_WITH_TIMEOUT(!navigated.isEmpty(), 30000);
    QVERIFY(navigated.first().at(1).toBool());
    const QString html = QString::fromUtf8(TestFiles::read(preview.PreviewPagePath()));
    QVERIFY(html.contains(QStringLiteral("Article 0")) && html.contains(QStringLiteral("Tomatoes")));
    QVERIFY(html.trimmed().endsWith(QStringLiteral("<!-- qliArticleID=0 -->")));
    QTRY_VERIFY(!preview.View().Title().isEmpty());
    QVERIFY2(!preview.View().Title().contains(QStringLiteral("changed by the feed")),
             qPrintable(preview.View().Title()));

    // The row shown again writes nothing; another row writes its page.
    const int writes = preview.PageWrites();
    preview.ShowArticle(0);
    QCOMPARE(preview.PageWrites(), writes);
    articles->setCurrentItem(articles->topLevelItem(2));
    QCOMPARE(preview.PageWrites(), writes + 1);

    // Following a link away offers the way back to the article.
    auto *back = child<QPushButton>("cmdShowArticle");
    QTRY_COMPARE_WITH_TIMEOUT(navigated.size(), 2, 15000);
    QVERIFY(!back->isEnabled());
    preview.View().Navigate(m_server.url(QStringLiteral("/away")));
    QTRY_VERIFY_WITH_TIMEOUT(back->isEnabled(), 15000);
    back->click();
    QVERIFY(!back->isEnabled());
    QTRY_COMPARE_WITH_TIMEOUT(preview.View().Location(), QUrl::fromLocalFile(preview.PreviewPagePath()),
                              15000);
}

void tst_frmPreviewSubscription::feedThatCannotBeShownAlertsAndCloses()
{
    for (const char *path : {"/empty", "/missing"}) {
        m_prompts->asked.clear();
        frmPreviewSubscription &preview = open(QLatin1String(path));
        QTRY_COMPARE_WITH_TIMEOUT(m_prompts->texts().size(), 1, 15000);
        QCOMPARE(m_prompts->texts().first(),
                 QStringLiteral("There was an error loading the feed for preview.  Please "
                                "check that the URL is valid."));
        QTRY_VERIFY(!preview.isVisible());
        QCOMPARE(child<QTreeWidget>("grdArticles")->topLevelItemCount(), 0);
        QCOMPARE(preview.GetResults(), 0);
    }
}

void tst_frmPreviewSubscription::addClosesWithItsResult_data()
{
    QTest::addColumn<QString>("title"); // the title the preview's caller gives
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QString>("shownTitle");
    row("none given: the feed's", "", "Corvell - Preview for 'Garden'", "Garden");
    row("the caller's", "Mine", "Corvell - Preview for 'Mine'", "Mine");
    row("the missing-value marker", "-237237", "Corvell", "");
}

void tst_frmPreviewSubscription::addClosesWithItsResult()
{
    QFETCH(QString, title);
    frmPreviewSubscription &preview = open(QStringLiteral("/garden"), title);
    QTRY_COMPARE_WITH_TIMEOUT(child<QTreeWidget>("grdArticles")->topLevelItemCount(), 3, 15000);
    QTEST(preview.windowTitle(), "caption");
    QTEST(child<QLineEdit>("txtTitle")->text(), "shownTitle");
    child<QPushButton>("cmdAdd")->click();
    QCOMPARE(preview.GetResults(), frmPreviewSubscription::kResultAdd);
    QVERIFY(!preview.isVisible());
}

// An article with everything its page shows, and a picture from the feed's own server.
void tst_frmPreviewSubscription::imagesWaitForTheReaderAndTheArticleShowsItsDetails()
{
    m_server.serve("/rose.png", "not really a picture", "image/png");
    m_server.serve("/pictures",
                   "<rss version=\"2.0\"><channel><title>P</title><item><title>Roses</title><author>ann@"
                   "example.com (Ann)</author><pubDate>Wed, 01 May 2024 10:01:00 GMT</pubDate><descrip"
                   "tion>&lt;img src=\"" +
                       m_server.url("/rose.png").toEncoded() +
                       "\" alt=\"A rose\"&gt;"
                       "</description><enclosure url=\"http://127.0.0.1:9/roses.mp3\" type=\"audio/mpeg\" "
                       "length=\"4096\"/></item></channel></rss>");
    QSignalSpy navigated(&open(QStringLiteral("/pictures")).View(), &ArticleView::NavigationComplete);
    QTRY_VERIFY_WITH_TIMEOUT(!navigated.isEmpty(), 30000);
    for (const char *text : {"1 May 2024 10:01 UTC", "ann@example.com (Ann)", "http://127.0.0.1:9/roses.mp3",
                             "audio/mpeg, 4 KB", "[A rose]</a>"})
        QVERIFY2(TestFiles::read(m_preview->PreviewPagePath()).contains(text), text);
    QCOMPARE(m_server.requestCount("/rose.png"), 0);

    // Asked for, the picture loads, and the choice is kept for the feed.
    auto *show = child<QPushButton>("cmdShowImages");
    QVERIFY(show->isVisible() && show->isEnabled() && !show->isChecked());
    show->click();
    QTRY_COMPARE_WITH_TIMEOUT(m_server.requestCount("/rose.png"), 1, 30000);
    open(QStringLiteral("/pictures"));
    QVERIFY(child<QPushButton>("cmdShowImages")->isChecked());
}

void tst_frmPreviewSubscription::clicksFollowOnlyWebLinks_data()
{
    QTest::addColumn<QString>("link");
    QTest::addColumn<bool>("followed");
    row("a feed's item link to a local file", "file:///etc/passwd", false);
    row("script", "javascript:alert(1)", false);
    row("data", "data:text/html,<p>x</p>", false);
    row("the program's data", "quillon-data:directory/root.opml", false);
    row("web", "https://example.com/story", true);
    row("web, upper case", "HTTP://example.com/story", true);
}

void tst_frmPreviewSubscription::clicksFollowOnlyWebLinks()
{
    QFETCH(QString, link);
    QTEST(WebArticleView::MayFollow(QUrl(link)), "followed");
}

int main(int argc, char *argv[])
{
    WebArticleView::PrepareProcess();
    QApplication app(argc, argv);
    tst_frmPreviewSubscription test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_frmPreviewSubscription.moc"
