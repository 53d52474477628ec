// Pictures of the add-subscription wizard's tabs and of the feed preview for the README, from a
// temporary engine and a local feed server. The preview's browser draws only on a real display,
// so run it under xvfb-run:
//
//   xvfb-run -a addsub_screenshots <folder>     (writes addsub-*.png there)

#include "ClientAccess.h"
#include "FeedListModel.h"
#include "LocalHttpServer.h"
#include "Shots.h"
#include "TestEngine.h"
#include "WebArticleView.h"
#include "frmAddSubscription.h"
#include "frmPreviewSubscription.h"

#include <QApplication>
#include <QBuffer>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeView>
#include <QTreeWidget>

#include <cstdio>

namespace {

QByteArray gardenFeed()
{
    const char *bodies[] = {
        "&lt;p&gt;The first tomatoes are in. After a cold May the plants caught up in two warm weeks, and "
        "the "
        "cherry varieties ripened before the beefsteaks, as they always do.&lt;/p&gt;&lt;h3&gt;What "
        "worked&lt;/h3&gt;"
        "&lt;ul&gt;&lt;li&gt;Mulching early with straw&lt;/li&gt;&lt;li&gt;Watering at the roots, in the "
        "morning"
        "&lt;/li&gt;&lt;li&gt;Pinching out side shoots every few "
        "days&lt;/li&gt;&lt;/ul&gt;&lt;blockquote&gt;A "
        "tomato ripened on the vine tastes of the summer it grew in.&lt;/blockquote&gt;&lt;p&gt;Next week: "
        "saving "
        "seed from the best plants.&lt;/p&gt;",
        "&lt;p&gt;Beans climb, peas scramble. A note on supports.&lt;/p&gt;",
        "&lt;p&gt;Why the compost heap was cold all spring, and how it came back.&lt;/p&gt;",
        "&lt;p&gt;Slugs, beer traps and a long evening with a torch.&lt;/p&gt;",
        "&lt;p&gt;The rain gauge says 41 mm for June.&lt;/p&gt;",
        "&lt;p&gt;First frost dates, and why they keep moving.&lt;/p&gt;"};
    const char *titles[] = {"The first tomatoes of the year",
                            "Supports for beans and peas",
                            "A cold compost heap",
                            "Slug patrol",
                            "June rainfall",
                            "Frost dates"};
    QString out =
        QStringLiteral("<?xml version=\"1.0\"?><rss version=\"2.0\"><channel><title>Garden Diary</title>"
                       "<link>https://garden.example.net/</link>"
                       "<description>A year in a small kitchen garden, week by week.</description>");
    for (int i = 0; i < 6; ++i)
        out += QStringLiteral(
                   "<item><guid>g%1</guid><title>%2</title><link>https://garden.example.net/%1</link>"
                   "<pubDate>Sun, %3 Jun 2026 08:00:00 GMT</pubDate><description>%4</description></item>")
                   .arg(i)
                   .arg(QLatin1String(titles[i]))
                   .arg(28 - i * 4)
                   .arg(QLatin1String(bodies[i]));
    return (out + QStringLiteral("</channel></rss>")).toUtf8();
}

const char *kNestedOpml =
    "<?xml version=\"1.0\"?><opml version=\"2.0\"><head><title>My reader</title></head><body>"
    "<outline text=\"News\"><outline text=\"World\">"
    "<outline text=\"World Headlines\" xmlUrl=\"https://news.example.org/world/rss.xml\" description=\"Top "
    "stories\"/>"
    "<outline text=\"Europe Today\" xmlUrl=\"https://news.example.org/europe/rss.xml\"/></outline>"
    "<outline text=\"Local Weather\" xmlUrl=\"https://weather.example.org/city/rss\"/></outline>"
    "<outline text=\"Blogs\"><outline text=\"Design Matters\" "
    "xmlUrl=\"https://blog.example.com/design/feed\"/>"
    "<outline text=\"Garden Diary\" xmlUrl=\"https://garden.example.net/atom.xml\"/></outline>"
    "<outline text=\"Release Announcements\" xmlUrl=\"https://software.example.com/releases.atom\"/>"
    "</body></opml>";

// A picture for the article, drawn here: a sun over a bed of rows.
QByteArray gardenPicture()
{
    QImage image(560, 240, QImage::Format_RGB32);
    image.fill(QColor(0xcf, 0xe8, 0xf7));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0xf2, 0xb7, 0x05));
    painter.drawEllipse(QPoint(440, 70), 38, 38);
    painter.setBrush(QColor(0x6b, 0x4f, 0x2a));
    painter.drawRect(0, 160, 560, 80);
    painter.setBrush(QColor(0x3f, 0x8f, 0x3a));
    for (int x = 30; x < 560; x += 70)
        painter.drawEllipse(QPoint(x, 160), 26, 34);
    painter.setBrush(QColor(0xd6, 0x2d, 0x20));
    for (int x = 42; x < 560; x += 70)
        painter.drawEllipse(QPoint(x, 168), 9, 9);
    painter.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.scaledToWidth(420, Qt::SmoothTransformation).save(&buffer, "PNG");
    return bytes;
}

// One article with a picture from the feed's own server, an author and an enclosure.
QByteArray picturesFeed(const QUrl &picture)
{
    return QStringLiteral(
               "<?xml version=\"1.0\"?><rss version=\"2.0\"><channel><title>Garden Diary</title>"
               "<item><guid>p1</guid><title>The beds in July</title>"
               "<author>ann@garden.example.net (Ann Gardener)</author>"
               "<pubDate>Sun, 05 Jul 2026 08:00:00 GMT</pubDate><description>&lt;p&gt;The tomatoes are "
               "staked and the rows are mulched.&lt;/p&gt;&lt;p&gt;&lt;img src=\"%1\" alt=\"The beds\"&gt;"
               "&lt;/p&gt;&lt;p&gt;A short walk along the rows is in this week's recording.&lt;/p&gt;"
               "</description><enclosure url=\"https://garden.example.net/july.mp3\" type=\"audio/mpeg\" "
               "length=\"5242880\"/></item></channel></rss>")
        .arg(picture.toString())
        .toUtf8();
}

bool save(QWidget &window, const QDir &folder, const char *name)
{
    QTest::qWait(300);
    QScreen *screen = window.screen();
    const QPixmap shot = screen ? screen->grabWindow(window.winId()) : window.grab();
    return Shots::save(shot, folder.filePath(QLatin1String(name)));
}

template <typename T> T *child(QWidget &w, const char *name)
{
    return w.findChild<T *>(QLatin1String(name));
}

// The preview of a served feed with its first article; with picture, after "Show images" once
// that picture was asked for.
bool previewShot(const quillon::SubscribeClientPtr &client, const LocalHttpServer &server,
                 const QString &path, const QDir &out, const char *name, const QString &picture = {})
{
    frmPreviewSubscription preview;
    preview.InitWindow(client, nullptr, QStringLiteral("Garden Diary"), server.url(path).toString(), false);
    QSignalSpy drawn(&preview.View(), &ArticleView::NavigationComplete);
    preview.resize(900, picture.isEmpty() ? 680 : 900); // the picture's article down to its enclosure
    preview.show();
    (void)QTest::qWaitFor([&] { return !drawn.isEmpty(); }, 20000);
    if (!picture.isEmpty()) {
        child<QPushButton>(preview, "cmdShowImages")->click();
        (void)QTest::qWaitFor([&] { return server.requestCount(picture) > 0; }, 20000);
    }
    QTest::qWait(800);
    return save(preview, out, name);
}

} // namespace

int main(int argc, char *argv[])
{
    const Shots::Program program(argc, argv, WebArticleView::PrepareProcess);
    const QDir &out = program.folder;
    TestEngine engine;
    LocalHttpServer server;
    if (!engine.isReady() || !server.listen())
        return 1;
    server.serve(QStringLiteral("/garden"), gardenFeed());
    const auto client = engine.newClient();
    ClientAccess::SetEngineClient(client);
    QTemporaryDir files;
    const QString opml = files.filePath(QStringLiteral("My Feeds.opml"));
    QFile file(opml);
    if (!file.open(QIODevice::WriteOnly) || file.write(kNestedOpml) < 0)
        return 1;
    file.close();

    bool ok = true;
    {
        frmAddSubscription wizard;
        wizard.Initialize({QStringLiteral("News"), QStringLiteral("News~~~World"), QStringLiteral("Blogs")});
        wizard.resize(780, 560);
        wizard.show();
        child<QLineEdit>(wizard, "txtURL")->setText(server.url(QStringLiteral("/garden")).toString());
        child<QLineEdit>(wizard, "txtUserTitle")->setText(QStringLiteral("Garden Diary"));
        child<QComboBox>(wizard, "cboCategories_enterTab")->setCurrentIndex(5);
        ok &= save(wizard, out, "addsub-url.png");

        auto *tabs = child<QTabWidget>(wizard, "tabController");
        tabs->setCurrentIndex(1);
        auto *sub = child<QTreeView>(wizard, "grdSubList");
        (void)QTest::qWaitFor([&] { return sub->model()->rowCount() > 3; }, 10000);
        auto *model = qobject_cast<FeedListModel *>(sub->model());
        model->Toggle(model->index(1, 0));
        model->Toggle(model->index(3, 0));
        sub->setCurrentIndex(model->index(3, 0));
        ok &= save(wizard, out, "addsub-directory.png");

        tabs->setCurrentIndex(2);
        (void)QTest::qWaitFor([&] { return child<QComboBox>(wizard, "cboSearchSources")->count() > 0; },
                              10000);
        child<QComboBox>(wizard, "cboSearchSources")->setCurrentIndex(2);
        child<QLineEdit>(wizard, "txtSearchString")->setText(QStringLiteral("sqlite performance"));
        ok &= save(wizard, out, "addsub-search.png");

        wizard.USMImportOPMLFile(opml);
        auto *imported = child<QTreeView>(wizard, "grdImportList");
        (void)QTest::qWaitFor([&] { return imported->model()->rowCount() > 0; }, 10000);
        imported->expandAll();
        auto *importModel = qobject_cast<FeedListModel *>(imported->model());
        const QModelIndexList feeds = importModel->FeedRows();
        for (int i : {0, 2, 3})
            importModel->Toggle(feeds.value(i));
        imported->setCurrentIndex(feeds.value(0));
        ok &= save(wizard, out, "addsub-import.png");
    }
    ok &= previewShot(client, server, QStringLiteral("/garden"), out, "addsub-preview.png");
    server.serve(QStringLiteral("/beds.png"), gardenPicture(), "image/png");
    server.serve(QStringLiteral("/pictures"), picturesFeed(server.url(QStringLiteral("/beds.png"))));
    ok &= previewShot(client, server, QStringLiteral("/pictures"), out, "addsub-preview-images.png",
                      QStringLiteral("/beds.png"));
    ClientAccess::SetEngineClient(nullptr);
    return ok ? 0 : 1;
}
