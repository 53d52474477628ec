#include "MediaChoices.h"
#include "MediaPlacement.h"
#include "TestRows.h"

#include <QSet>
#include <QTest>

// File names and folders of downloads, without an engine.
class tst_MediaPlacement : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void namesAreSafe_data();
    void namesAreSafe();
    void kindsPickFolders_data();
    void kindsPickFolders();
    void collisionsKeepBothUnlessOverwriting();
    void answersComeFromTheRightSection_data();
    void answersComeFromTheRightSection();
};

void tst_MediaPlacement::namesAreSafe_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("name");
    row("plain", "http://h/a/ep1.mp3?x=1", "T", "audio/mpeg", "ep1.mp3");
    row("escaped", "http://h/My%20Show%2Fep.mp3", "", "", "My Show_ep.mp3");
    row("no extension, title", "http://h/get?id=3", "Episode: 3/4", "audio/mpeg", "Episode_ 3_4.mp3");
    row("hidden", "http://h/..profile.jpg", "", "", "profile.jpg");
    row("device name", "http://h/con.txt", "", "", "_con.txt");
    row("nothing left", "http://h/", "", "", "Untitled");
    row("control characters", "http://h/a%0Ab.ogg", "", "", "a_b.ogg");
}

void tst_MediaPlacement::namesAreSafe()
{
    QFETCH(QString, url);
    QFETCH(QString, title);
    QFETCH(QString, type);
    QTEST(MediaPlacement::fileName(url, title, type), "name");
}

void tst_MediaPlacement::kindsPickFolders_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("url");
    QTest::addColumn<bool>("storeAll");
    QTest::addColumn<QString>("folder");
    row("audio type", "audio/mpeg", "http://h/x", true, "/m/Show");
    row("video by extension", "", "http://h/x.mp4", true, "/v/Show");
    row("generic type, image extension", "application/octet-stream", "http://h/x.png", true, "/p/Show");
    row("document", "application/pdf", "http://h/x.pdf", true, "/d/Show");
    row("music folder off", "audio/ogg", "http://h/x.ogg", false, "/d/Show");
}

void tst_MediaPlacement::kindsPickFolders()
{
    QFETCH(QString, type);
    QFETCH(QString, url);
    QFETCH(bool, storeAll);
    QFETCH(QString, folder);
    MediaChoices choices;
    choices.storeMusic = choices.storeVideos = choices.storePictures = storeAll;
    const MediaFolders folders{"/m", "/v", "/p", "/d", "/m/Playlists"};
    QCOMPARE(MediaPlacement::folderFor(MediaPlacement::kindOf(type, url), choices, folders, "Show"), folder);
    choices.organizeBySubscription = false;
    QCOMPARE(MediaPlacement::folderFor(MediaPlacement::kindOf(type, url), choices, folders, "Show"),
             folder.chopped(5));
}

void tst_MediaPlacement::collisionsKeepBothUnlessOverwriting()
{
    const QSet<QString> taken = {"/f/a.mp3", "/f/a (2).mp3", "/f/noext"};
    const auto isTaken = [&](const QString &p) { return taken.contains(p); };
    QCOMPARE(MediaPlacement::freePath("/f", "a.mp3", false, isTaken), QString("/f/a (3).mp3"));
    QCOMPARE(MediaPlacement::freePath("/f", "a.mp3", true, isTaken), QString("/f/a.mp3"));
    QCOMPARE(MediaPlacement::freePath("/f", "noext", false, isTaken), QString("/f/noext (2)"));
    QCOMPARE(MediaPlacement::freePath("/f", "b.mp3", false, isTaken), QString("/f/b.mp3"));
}

void tst_MediaPlacement::answersComeFromTheRightSection_data()
{
    QTest::addColumn<QString>("own");
    QTest::addColumn<QString>("general");
    QTest::addColumn<QString>("prompt");
    QTest::addColumn<int>("answer");
    using D = MediaChoices::Download;
    row("own yes beats general no", "1", "0", "1", int(D::Always));
    row("own no beats general yes", "0", "1", "0", int(D::Never));
    row("no own, asking", "-237237", "1", "1", int(D::Ask));
    row("no own, general yes", "-237237", "True", "0", int(D::Always));
    row("no own, general no", "", "0", "0", int(D::Never));
}

void tst_MediaPlacement::answersComeFromTheRightSection()
{
    QFETCH(QString, own);
    QFETCH(QString, general);
    QFETCH(QString, prompt);
    QTEST(int(MediaChoices::decide(own, general, prompt)), "answer");
}

QTEST_GUILESS_MAIN(tst_MediaPlacement)
#include "tst_MediaPlacement.moc"
