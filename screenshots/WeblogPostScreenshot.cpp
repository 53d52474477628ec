// The picture of a published post as the weblog shows it, for the README: an article posted
// through the publishing side to Debian's WordPress on 127.0.0.1, its page drawn by the web
// engine. The web engine draws only on a real display, so run it under xvfb-run:
//
//   xvfb-run -a weblog_post_screenshot <folder>     (writes publishing-post.png there)

#include "ArticlePublisher.h"
#include "ConsumerSettings.h"
#include "EngineCalls.h"
#include "PublishingUtils.h"
#include "Shots.h"
#include "TestEngine.h"
#include "WebArticleView.h"
#include "WordPressServer.h"

#include <QApplication>
#include <QDir>
#include <QJsonObject>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QWebEngineView>

#include <cstdio>

namespace {
const PostComposer::Article kArticle{
    QStringLiteral("High water at the old mill"),
    QStringLiteral("https://river.example.net/2026/11/high-water"),
    QStringLiteral("<p>After three days of rain the river rose past the second step of the old mill "
                   "this morning, the highest since the spring of 2019.</p><p>The footpath along the "
                   "weir is closed until the water goes down; the bridge at Church Lane stays open.</p>"),
    QStringLiteral("Ann Walker"),
    QStringLiteral("2026-11-20"),
    QStringLiteral("River News"),
    QStringLiteral("https://river.example.net/feed"),
    QStringLiteral("https://river.example.net/")};

// Quick publishing to the one weblog, without a word after it.
void setUpWeblog(quillon::SubscribeClient &client, const WordPressServer &wordpress)
{
    PublishingUtils::AddWeblog(client, {WordPressServer::kTitle, WordPressServer::kUser,
                                        WordPressServer::kPassword, 0, wordpress.xmlrpc().toString(),
                                        wordpress.home().toString(), QStringLiteral("1"), true, QString()});
    const QString defaults = QStringLiteral("Publishing_defaults");
    SetConsumerSetting(client, QStringLiteral("ENGINE"), defaults,
                       QStringLiteral("PUBDLG_alwaysDoCurrentSettings"), QStringLiteral("1"));
    SetConsumerSetting(client, QStringLiteral("ENGINE"), defaults, QStringLiteral("PUBDLG_showSuccessDialog"),
                       QStringLiteral("0"));
}
} // namespace

int main(int argc, char *argv[])
{
    const Shots::Program program(argc, argv, WebArticleView::PrepareProcess);
    const QDir &out = program.folder;
    WordPressServer wordpress;
    if (!wordpress.start()) {
        std::fprintf(stderr, "WordPress cannot run here: %s\n", qPrintable(wordpress.errorText()));
        return 1;
    }
    TestEngine engine;
    const quillon::SubscribeClientPtr client = engine.newClient();
    client->Connect(QStringLiteral("CONFIGCONSUMER"), std::make_shared<EngineCalls::IgnoreMessages>());
    setUpWeblog(*client, wordpress);
    if (!ArticlePublisher(client, nullptr).Publish(kArticle) || wordpress.posts().isEmpty())
        return 1;

    QWebEngineView page;
    QSignalSpy loaded(&page, &QWebEngineView::loadFinished);
    page.resize(1000, 900);
    page.load(QUrl(wordpress.posts().first().toObject().value(QStringLiteral("url")).toString()));
    page.show();
    if (!QTest::qWaitFor([&] { return !loaded.isEmpty(); }, 30000))
        return 1;
    QTest::qWait(1000); // fonts and pictures settle after the load
    QScreen *screen = page.screen();
    const QPixmap shot = screen ? screen->grabWindow(page.winId()) : page.grab();
    return Shots::save(shot, out.filePath(QStringLiteral("publishing-post.png"))) ? 0 : 1;
}
