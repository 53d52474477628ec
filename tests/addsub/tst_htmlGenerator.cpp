#include "TestFiles.h"
#include "TestRows.h"
#include "commonUtils.h"
#include "htmlGenerator.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace htmlGenerator;

namespace {

const QString kWarning = u"(warning: template file missing, backup template in use)"_s;

// A program folder of its own, with whatever templates a case writes into it.
class ProgramFolder
{
public:
    ProgramFolder() { QDir().mkpath(localPath()); }
    QString path() const { return m_dir.path(); }
    QString localPath() const { return LocalPath(m_dir.path()); }
    void write(const QString &name, const QString &text) const
    {
        QVERIFY(TestFiles::write(localPath() + name, text.toUtf8()));
    }

private:
    QTemporaryDir m_dir;
};

ArticleFields article()
{
    ArticleFields f;
    f.articleId = 77;
    f.title = u"Title"_s;
    f.body = u"<p>Body</p>"_s;
    f.url = u"https://example.org/a"_s;
    return f;
}

// The built-in block row: an icon and a text, both linking to the address.
QString blockRow(const QString &localPath, const QString &link, const QString &icon, const QString &text)
{
    return u"<tr><td>&nbsp;</td><td><div align='right'><a href='"_s + link + u"'><img src='"_s + localPath +
           u"images/"_s + icon + u".gif' border='0'></a></div></td><td><a href='"_s + link + u"'>"_s + text +
           u"</a></td><td>&nbsp;</td></tr>"_s;
}

QString trailer(qint32 id)
{
    return u"<!-- qliArticleID="_s + QString::number(id) + u" -->"_s;
}

} // namespace

class tst_htmlGenerator : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
    void everyPlaceholderIsReplacedInItsOrderIgnoringCase();
    void emptyOrMissingTemplatesUseTheBuiltInTexts();
    void markedSectionBecomesACommentOnlyWithoutAnyBlock();
    void blocksReadTheirVariantAndReplaceInOrder();
    void enclosureFileTypeTakesMimeTypeThenExtension_data();
    void enclosureFileTypeTakesMimeTypeThenExtension();
    void shippedTemplatesFillCompletely();
};

void tst_htmlGenerator::cleanup()
{
    SetHostTitle(u"Corvell"_s);
    SetHostUrl(QString());
}

void tst_htmlGenerator::everyPlaceholderIsReplacedInItsOrderIgnoringCase()
{
    ProgramFolder folder;
    folder.write(
        u"template.html"_s,
        u"[~COMMENT_NOMARKASREAD_START~~COMMENT_NOMARKASREAD_END~~DATA_AD~~DATA_ARTICLETIME~"
        "~DATA_DEBUG~~DATA_TEST~]~DATA_DBID~|~data_localpath~|~Data_ArticleTitle~|~DATA_ARTICLEBODY~|"
        "~DATA_ARTICLEURL~|~DATA_HOSTTITLE~|~DATA_HOSTURL~|~DATA_ARTICLEDATE~|~DATA_HIDDEN~|"
        "~data_articletitle~"_s);
    ArticleFields f = article();
    // A value put in earlier is searched by the later placeholders, never the other way round.
    f.title = u"T~DATA_ARTICLEURL~"_s;
    f.body = u"<b>~DATA_ARTICLETITLE~</b>~DATA_HIDDEN~"_s;
    f.idText = u"db-9"_s;
    f.dateText = u"22 Nov 2026"_s;
    f.hiddenText = u"hidden"_s;
    f.hostUrlFallback = u"https://fallback.example/"_s;
    SetHostTitle(u"Host"_s);

    const QString tu = u"Thttps://example.org/a"_s;
    QCOMPARE(BuildArticlePage(folder.path(), f),
             u"[]db-9|"_s + folder.localPath() + u"|"_s + tu +
                 u"|<b>~DATA_ARTICLETITLE~</b>hidden|https://example.org/a|Host|https://fallback.example/|"
                 "22 Nov 2026|hidden|"_s +
                 tu + trailer(77));

    f.articleId = -5;
    QVERIFY(BuildArticlePage(folder.path(), f).endsWith(trailer(-5)));

    // The host address is the program-wide one unless that is blank.
    folder.write(u"template.html"_s, u"~DATA_HOSTTITLE~ ~DATA_HOSTURL~"_s);
    for (const QString &blank : {QString(), u" "_s, u"-237237"_s}) {
        SetHostUrl(blank);
        QCOMPARE(BuildArticlePage(folder.path(), f), u"Host https://fallback.example/"_s + trailer(-5));
    }
    SetHostUrl(u"https://corvell.example/"_s);
    QCOMPARE(BuildArticlePage(folder.path(), f), u"Host https://corvell.example/"_s + trailer(-5));
}

void tst_htmlGenerator::emptyOrMissingTemplatesUseTheBuiltInTexts()
{
    ProgramFolder folder;
    ArticleFields f = article();
    f.dateText = u"today"_s;
    const QString missing = BuildArticlePage(folder.path(), f);
    QCOMPARE(
        missing,
        u"<html><body><table width='100%' border='0' cellspacing='0' cellpadding='3'><tr><td><h2>"
        "<a href='https://example.org/a'>Title</a></h2></td></tr><tr><td><p>Body</p></td></tr><tr><td>"
        "<font size='-2'><a href=''>Corvell</a>today    (warning: template file missing, backup template "
        "in use)</font></td></tr></table></body></html>"_s +
            trailer(77));

    folder.write(u"template.html"_s, QString());
    QCOMPARE(BuildArticlePage(folder.path(), f), missing);

    // The safe flag and a named template each pick their own file.
    folder.write(u"template.html"_s, u"normal ~DATA_ARTICLETITLE~"_s);
    folder.write(u"templateSafe.html"_s, u"safe ~DATA_ARTICLETITLE~"_s);
    QCOMPARE(BuildArticlePage(folder.path(), f), u"normal Title"_s + trailer(77));
    f.safe = true;
    QCOMPARE(BuildArticlePage(folder.path(), f), u"safe Title"_s + trailer(77));
    f.templateName = u"other.html"_s;
    QVERIFY(BuildArticlePage(folder.path(), f).contains(kWarning));
    folder.write(u"other.html"_s, u"other"_s);
    QCOMPARE(BuildArticlePage(folder.path(), f), u"other"_s + trailer(77));
}

void tst_htmlGenerator::markedSectionBecomesACommentOnlyWithoutAnyBlock()
{
    ProgramFolder folder;
    folder.write(u"template.html"_s,
                 u"a~comment_noenclosures_start~[~DATA_SOURCE~~DATA_COMMENTS~~DATA_ENCLOSURE~]"
                 "~COMMENT_NOENCLOSURES_END~b"_s);
    ArticleFields f = article();
    QCOMPARE(BuildArticlePage(folder.path(), f), u"a<!--[]-->b"_s + trailer(77));
    f.diskEnclosure = u"-237237"_s;
    QCOMPARE(BuildArticlePage(folder.path(), f), u"a<!--[]-->b"_s + trailer(77));

    for (int only = 0; only < 4; ++only) {
        ArticleFields g = article();
        QString *const urls[] = {&g.sourceUrl, &g.commentsUrl, &g.enclosureUrl, &g.diskEnclosure};
        *urls[only] = u"https://x.example/a.mp3"_s;
        const QString page = BuildArticlePage(folder.path(), g);
        QVERIFY2(page.startsWith(u"a[<tr>"_s) && page.endsWith(u"</tr>]b"_s + trailer(77)), qPrintable(page));
    }
}

void tst_htmlGenerator::blocksReadTheirVariantAndReplaceInOrder()
{
    ProgramFolder folder;
    const QString lp = folder.localPath();
    QCOMPARE(SourceBlock(lp, false, u"https://s.example/"_s, QString()),
             blockRow(lp, u"https://s.example/"_s, u"source"_s, u"https://s.example/"_s));
    QCOMPARE(CommentsBlock(lp, true, u"https://c.example/"_s),
             blockRow(lp, u"https://c.example/"_s, u"comments"_s, u"Link to Comments"_s));
    const QString talk = u"https://e.example/talk.mp3?x=1"_s;
    QCOMPARE(EnclosureBlock(lp, false, talk, QString(), 1), blockRow(lp, talk, u"audio"_s, talk));

    // Each variant reads its own file; the local path goes in before any value, so a value that
    // looks like a placeholder is kept when its placeholder comes earlier.
    folder.write(u"sourceTemplate.html"_s, u"N ~DATA_SOURCETITLE~ ~data_sourceurl~"_s);
    folder.write(u"sourceTemplateSafe.html"_s, u"S ~DATA_LOCALPATH~ ~DATA_SOURCETITLE~"_s);
    QCOMPARE(SourceBlock(lp, false, u"u"_s, u"~DATA_SOURCEURL~ ~DATA_LOCALPATH~"_s),
             u"N u ~DATA_LOCALPATH~ u"_s);
    QCOMPARE(SourceBlock(lp, true, u"u"_s, u"t"_s), u"S "_s + lp + u" t"_s);
    folder.write(u"commentsTemplate.html"_s, u"~DATA_COMMENTSTITLE~ ~DATA_COMMENTSURL~"_s);
    QCOMPARE(CommentsBlock(lp, false, u"~DATA_COMMENTSTITLE~"_s), u"Link to Comments Link to Comments"_s);
    folder.write(u"enclosureTemplateSafe.html"_s,
                 u"~DATA_ENCLOSURETITLE~ ~DATA_ENCLOSUREURL~ ~DATA_ENCLOSUREFILETYPE~"_s);
    QCOMPARE(EnclosureBlock(lp, true, u"v.bin"_s, u"video/mp4"_s, 1), u"v.bin v.bin video"_s);

    // A stored copy is opened by the add-in, through its own template.
    const QString link =
        u"quillon://127.0.0.1:45888/qli_msg.gif?Source=HTML&Destination=OLCONSUMER&cmd=openenclosure&aid=42"_s;
    QCOMPARE(EnclosureBlock(lp, false, u"C:\\store\\talk.mp3"_s, u"DISK"_s, 42),
             blockRow(lp, link, u"~DATA_ENCLOSUREFILETYPE~"_s, u"C:\\store\\talk.mp3"_s));

    folder.write(u"template.html"_s, u"~DATA_ENCLOSURE~"_s);
    folder.write(u"enclosureTemplate.html"_s, u"[web ~DATA_ENCLOSURETITLE~]"_s);
    folder.write(u"enclosureDiskTemplate.html"_s, u"[disk ~DATA_ENCLOSURETITLE~ ~DATA_ENCLOSUREURL~]"_s);
    ArticleFields f = article();
    f.articleId = 42;
    f.enclosureUrl = u"https://e.example/talk.mp3"_s;
    f.diskEnclosure = u"talk.mp3"_s;
    QCOMPARE(BuildArticlePage(folder.path(), f),
             u"[web https://e.example/talk.mp3][disk talk.mp3 "_s + link + u"]"_s + trailer(42));
}

void tst_htmlGenerator::enclosureFileTypeTakesMimeTypeThenExtension_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("mime");
    QTest::addColumn<QString>("icon");
    row("mime wins", u"https://x/a.pdf"_s, u"audio/mpeg"_s, u"audio"_s);
    row("mime with parameters", u"x"_s, u" Video/MP4; codecs=avc1"_s, u"video"_s);
    row("office document", u"x"_s, u"application/vnd.ms-powerpoint"_s, u"document"_s);
    row("archive mime", u"x"_s, u"application/x-7z-compressed"_s, u"archive"_s);
    row("generic mime, extension", u"https://x/p.JPG"_s, u"application/octet-stream"_s, u"image"_s);
    row("query ignored", u"https://x/get.php/show.m4a?file=a.zip#t=1"_s, QString(), u"audio"_s);
    row("dot only in host", u"https://cdn.example.org/episode"_s, QString(), u"file"_s);
    row("archive extension", u"https://x/src.tar.gz"_s, QString(), u"archive"_s);
    row("unknown", u"https://x/a.xyz"_s, u"application/x-thing"_s, u"file"_s);
}

void tst_htmlGenerator::enclosureFileTypeTakesMimeTypeThenExtension()
{
    QFETCH(QString, url);
    QFETCH(QString, mime);
    QTEST(EnclosureFileType(url, mime), "icon");
}

void tst_htmlGenerator::shippedTemplatesFillCompletely()
{
    const QString dataParent = qEnvironmentVariable("QUILLON_SOURCE_DIR") + u"/data"_s;
    const QString lp = LocalPath(dataParent);
    ArticleFields f = article();
    f.dateText = u"22 November 2026"_s;
    f.hiddenText = u"hidden"_s;
    f.idText = u"id"_s;
    f.hostUrlFallback = u"https://corvell.example/"_s;
    f.sourceUrl = u"https://src.example/"_s;
    f.sourceTitle = u"Source"_s;
    f.commentsUrl = u"https://src.example/a#comments"_s;
    f.enclosureUrl = u"https://src.example/a.mp3"_s;
    f.enclosureType = u"audio/mpeg"_s;
    f.diskEnclosure = u"a.mp3"_s;

    const QRegularExpression image(u"images/([A-Za-z~_]+)\\.gif"_s);
    for (const bool safe : {false, true}) {
        f.safe = safe;
        const QString page = BuildArticlePage(dataParent, f);
        QVERIFY2(!page.contains(kWarning) && !page.contains(u"~DATA_"_s, Qt::CaseInsensitive) &&
                     !page.contains(u"~COMMENT_"_s),
                 qPrintable(page));
        QVERIFY(page.contains(u"<p>Body</p>"_s) && page.contains(u"Link to Comments"_s));
        for (auto m = image.globalMatch(page); m.hasNext();) {
            const QString name = m.next().captured(1);
            QVERIFY2(QFile::exists(lp + u"images/"_s + name + u".gif"_s), qPrintable(name));
        }
        if (safe) {
            QVERIFY(!page.contains(u"<script"_s, Qt::CaseInsensitive));
            // Nothing remote is loaded: links are fine, sources and imports are not.
            QVERIFY(
                !page.contains(QRegularExpression(u"(src\\s*=\\s*['\"]?|url\\(|@import)\\s*['\"]?https?:"_s,
                                                  QRegularExpression::CaseInsensitiveOption)));
        }
    }
    for (const char *icon : {"source", "comments", "audio", "video", "image", "document", "archive", "file"})
        QVERIFY2(QFile::exists(lp + u"images/"_s + QLatin1String(icon) + u".gif"_s), icon);
}

QTEST_GUILESS_MAIN(tst_htmlGenerator)
#include "tst_htmlGenerator.moc"
