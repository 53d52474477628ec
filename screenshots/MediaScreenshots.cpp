// Pictures of the enclosure downloads for the README: a podcast of seven episodes downloading
// (two whole, five held back by their server) in the main window's details pane, and `ls -R`
// of the filed downloads drawn as a terminal shows it. A temporary home, engine and local server.
//
//   media_screenshots <folder>     (writes media-*.png there)

#include "ConsumerSettings.h"
#include "EngineCalls.h"
#include "LocalHttpServer.h"
#include "MediaAgent.h"
#include "Shots.h"
#include "ShownMainWindow.h"
#include "TestEngine.h"
#include "frmMainWindow.h"

#include <QApplication>
#include <QDir>
#include <QFontDatabase>
#include <QImage>
#include <QLabel>
#include <QPainter>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>

using namespace quillon;

namespace {

struct Episode
{
    const char *name;
    const char *type;
    bool held; // its server never answers, so it stays downloading
};

const Episode kPodcast[] = {
    {"briefing-0412.mp3", "audio/mpeg", false}, {"briefing-0413.mp3", "audio/mpeg", false},
    {"briefing-0414.mp3", "audio/mpeg", true},  {"briefing-0415.mp3", "audio/mpeg", true},
    {"briefing-0416.mp3", "audio/mpeg", true},  {"briefing-0417.mp3", "audio/mpeg", true},
    {"briefing-0418.mp3", "audio/mpeg", true}};
const Episode kFieldNotes[] = {{"pond-at-dawn.mp4", "video/mp4", false},
                               {"heron.jpg", "image/jpeg", false},
                               {"survey-2026.pdf", "application/pdf", false}};

// A home of its own with the usual XDG folders, so the pictures show no private paths.
void makeHome(const QTemporaryDir &home)
{
    qputenv("HOME", home.path().toUtf8());
    qputenv("XDG_CONFIG_HOME", home.filePath(".config").toUtf8());
    qputenv("XDG_DATA_HOME", home.filePath(".local/share").toUtf8());
    QDir(home.path()).mkpath(".config");
    QFile dirs(home.filePath(".config/user-dirs.dirs"));
    if (dirs.open(QIODevice::WriteOnly))
        dirs.write("XDG_MUSIC_DIR=\"$HOME/Music\"\nXDG_VIDEOS_DIR=\"$HOME/Videos\"\n"
                   "XDG_PICTURES_DIR=\"$HOME/Pictures\"\n");
}

template <std::size_t N>
void serveFeed(LocalHttpServer &server, const QString &path, const char *title, const Episode (&episodes)[N])
{
    QByteArray feed = QByteArray("<rss version=\"2.0\"><channel><title>") + title + "</title>";
    int n = 0;
    for (const Episode &episode : episodes) {
        LocalHttpServer::Route route;
        route.contentType = episode.type;
        route.body = QByteArray(256 * 1024, 'x');
        route.neverAnswer = episode.held;
        const QString file = QStringLiteral("/media/") + QLatin1String(episode.name);
        server.setRoute(file, route);
        feed += "<item><guid>" + QByteArray::number(++n) + "</guid><title>" + episode.name +
                "</title><enclosure url=\"" + server.url(file).toEncoded() + "\" type=\"" + episode.type +
                "\" length=\"262144\"/></item>";
    }
    server.serve(path, feed + "</channel></rss>");
}

// The text a terminal would show, drawn light on dark in the system's fixed font.
QImage terminal(const QString &command, const QString &output)
{
    const QStringList lines = (QStringLiteral("$ ") + command + u'\n' + output).trimmed().split(u'\n');
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(14);
    const QFontMetrics metrics(font);
    int width = 0;
    for (const QString &line : lines)
        width = std::max(width, metrics.horizontalAdvance(line));
    QImage image(width + 24, int(lines.size()) * metrics.lineSpacing() + 24, QImage::Format_RGB32);
    image.fill(QColor(0x1e, 0x1e, 0x1e));
    QPainter painter(&image);
    painter.setFont(font);
    painter.setPen(QColor(0xe0, 0xe0, 0xe0));
    for (qsizetype i = 0; i < lines.size(); ++i)
        painter.drawText(12, 12 + metrics.ascent() + int(i) * metrics.lineSpacing(), lines.at(i));
    return image;
}

bool waitFor(const std::function<bool()> &condition, const char *what)
{
    if (QTest::qWaitFor(condition, 20000))
        return true;
    std::fprintf(stderr, "media_screenshots: %s did not happen\n", what);
    return false;
}

} // namespace

int main(int argc, char *argv[])
{
    QTemporaryDir home;
    makeHome(home);
    const Shots::Program program(argc, argv);
    const QDir &folder = program.folder;

    LocalHttpServer server;
    TestEngine engine;
    if (!server.listen() || !engine.isReady())
        return 1;
    serveFeed(server, "/briefing.xml", "Morning Briefing", kPodcast);
    serveFeed(server, "/field-notes.xml", "Field Notes", kFieldNotes);
    const SubscribeClientPtr feeds = engine.newClient();
    for (const char *key : {"EnableAutoDownload", "PlaceIntoPlaylist"})
        SetConsumerSetting(*feeds, "MEDIACONSUMER", "Settings", key, "1");
    SetConsumerSetting(*feeds, "MEDIACONSUMER", "Settings", "PromptForAutoDownload", "0");

    MediaAgent::Options options;
    options.folders = MediaFolders::fromSystem();
    options.indexPath = home.filePath(".local/share/Corvell/quillon-media/index.json");
    options.handOff = [](const QString &, const QString &) {};
    MediaAgent agent(engine.newClient(), options);
    QString error;
    if (!agent.start(&error))
        return 1;

    frmMainWindow window;
    Shots::showMainWindow(window, engine);

    const qint32 podcast = EngineCalls::AddSubscription(*feeds, "Morning Briefing",
                                                        server.url("/briefing.xml").toString(), "Podcasts");
    EngineCalls::AddSubscription(*feeds, "Field Notes", server.url("/field-notes.xml").toString(),
                                 "Podcasts");
    engine.core().startUpdating();
    auto *status = window.findChild<QLabel *>("lblDetailsStatus");
    const bool downloading = waitFor(
        [&] {
            window.Run();
            window.SelectRowByID(podcast);
            return status && status->text().contains("downloading 3 of 7") &&
                   QFileInfo::exists(home.filePath("Pictures/Field Notes/heron.jpg"));
        },
        "\"downloading 3 of 7\" in the details");
    QCoreApplication::processEvents(); // the details lay out their new text before the picture
    bool saved = downloading && Shots::save(window.grab(), folder.filePath("media-downloading.png"));

    QProcess ls;
    const QStringList args = {"-R", "Music", "Videos", "Pictures", ".local/share/Corvell/Downloads"};
    ls.setWorkingDirectory(home.path());
    ls.start("ls", args);
    saved = ls.waitForFinished() && saved;
    const QImage listing =
        terminal("ls -R " + args.mid(1).join(u' '), QString::fromLocal8Bit(ls.readAllStandardOutput()));
    saved = Shots::save(QPixmap::fromImage(listing), folder.filePath("media-files.png")) && saved;
    window.close();
    return saved ? 0 : 1;
}
