#include "GMimeSupport.h"

#include "ArticleHtml.h"
#include "FolderPlan.h"
#include "MailReaderConfig.h"
#include "MaildirStore.h"
#include "MessageBuilder.h"
#include "TestRows.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

Q_DECLARE_METATYPE(FolderDefaults)
Q_DECLARE_METATYPE(SubscriptionPlace)

using GMimeSupport::Owned;

// The folder and content rules, without an engine.
class tst_FolderPlan : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void folderFollowsSettings_data();
    void folderFollowsSettings();
    void namesStayApartAndFit_data();
    void namesStayApartAndFit();
    void themeFallsBackToDefaults();
    void messageIsStableAndFilterable();
    void feedDataReadsBackAndStaysInert_data();
    void feedDataReadsBackAndStaysInert();
    void neomuttListsEveryDeliveredFolder();
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
    QTest::newRow("folder title, separators escaped") << plain << titled << "\\my%2Esite%2Ffeed";

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
    QTest::newRow("no title: the address") << plain << nameless << "\\http:%2F%2Fx%2Eorg%2Frss";
}

void tst_FolderPlan::folderFollowsSettings()
{
    QFETCH(FolderDefaults, defaults);
    QFETCH(SubscriptionPlace, place);
    QFETCH(QString, expected);
    QCOMPARE(FolderPlan::pathText(FolderPlan::folderFor(defaults, place)), expected);
    QCOMPARE(FolderPlan::parsePath(expected), FolderPlan::folderFor(defaults, place));
}

void tst_FolderPlan::namesStayApartAndFit_data()
{
    QTest::addColumn<QString>("one");
    QTest::addColumn<QString>("other");
    row("dot and slash", "Col.A", "Col/A");
    row("dot and its escape", "Col.A", "Col%2EA");
    row("leading dot", ".hidden", "%2Ehidden");
    row("line break", "Evil\r\nBcc", "Evil%0D%0ABcc");
    row("blanks kept", "a  b", "a b");
    const QString cjk = QString(119, QChar(0x65b0));
    row("long CJK, last character differs", cjk + QChar(0x805e), cjk + QChar(0x7d19));
    const QString ascii = QString(130, QLatin1Char('x'));
    row("long, cut form typed by hand", ascii,
        FolderPlan::safeName(ascii).replace(QLatin1Char('~'), QStringLiteral("%7E")));
}

// One level each: different names stay different folders, and each fits where a Maildir++ name
// holds two levels; a name that needs no escaping is kept as it was.
void tst_FolderPlan::namesStayApartAndFit()
{
    QFETCH(QString, one);
    QFETCH(QString, other);
    const QString a = FolderPlan::safeName(one);
    const QString b = FolderPlan::safeName(other);
    QVERIFY2(a != b, qPrintable(a));
    for (const QString &name : {a, b}) {
        QVERIFY(name.toUtf8().size() <= FolderPlan::kMaxNameBytes);
        QVERIFY(!name.contains(QLatin1Char('.')) && !name.contains(QLatin1Char('/')));
        QVERIFY(!name.contains(QLatin1Char('\r')) && !name.contains(QLatin1Char('\n')));
        QCOMPARE(FolderPlan::parsePath(name), QStringList{name}); // a picked folder stays itself
    }
    QCOMPARE(FolderPlan::safeName(QStringLiteral("Daily News \u00e9")), QStringLiteral("Daily News \u00e9"));
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
    QVERIFY(both.contains("X-Feed-URL: http://example.com/rss"));
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

    // Date and author on the page; a remote image only once the reader asked for it.
    a.author = QStringLiteral("Ann <ann@example.com>");
    a.bodyHtml += QStringLiteral("<img src=\"http://example.com/p.png\" alt=\"p\">");
    QVERIFY(html.page(a).contains(QStringLiteral("1 May 2024 10:00 UTC Ann &lt;ann@example.com&gt;")));
    a.showImages = true;
    QVERIFY(html.page(a).contains(QStringLiteral("src=\"http://example.com/p.png\"")));
}

void tst_FolderPlan::feedDataReadsBackAndStaysInert_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("shown"); // the header as a mail program shows it, when not as written
    const QString evil =
        QString::fromLatin1("=?utf-8?B?" + QByteArray("Evil\r\nBcc: victim@example.com").toBase64() + "?=");
    const QString bcc = QStringLiteral("Evil Bcc: victim@example.com");
    const QString twice = QString(evil).replace("=", "=3D").replace("?", "=3F");
    const QString cjk(40, QChar(0x65b0));
    const QString delimiter = "--=_" + QString::fromLatin1(MessageBuilder::messageId({}).left(32));
    row("encoded subject", "subject", evil, bcc);
    row("encoded feed title", "feedTitle", evil, bcc);
    row("encoded twice", "subject", QStringLiteral("=?utf-8?Q?%1?=").arg(twice), bcc);
    row("raw line break in author", "author", "Evil\r\nBcc: victim@example.com", bcc);
    row("non-ASCII subject", "subject", "Grüße aus Köln – „Zitat“ ½ €", "");
    row("CJK feed title", "feedTitle", cjk, "");
    row("long CJK author", "author", cjk + " " + cjk + cjk, "");
    row("long subject", "subject", QStringLiteral("a long subject of many words ").repeated(6).trimmed(), "");
    row("one word longer than a line may be", "subject", QString(1200, 'x'), "");
    row("specials in feed title", "feedTitle", R"(Ann "A" (news), <x> \ y)", "");
    row("empty body", "body", "", "");
    row("very long lines", "body", "<p>" + QString(3000, 'x') + "</p>" + QString(2000, 'y'), "");
    row("8-bit text with blanks before breaks", "body", "<pre>Ünïcödé café  \n½ €\t\n</pre>", "");
    row("CJK body", "body", "<p>" + cjk.repeated(20) + "</p>", "");
    row("lone CR and LF in an enclosure line", "enclosure", "http://example.com/a\rb\nc d.mp3", "");
    row("the delimiter in the text", "body", "<pre>\n" + delimiter + "\n" + delimiter + "--\n</pre>", "");
    row("script article link", "link", "javascript:alert(1)", "");
    row("script enclosure", "enclosure", "JavaScript:alert(1)", "");
    row("script and data in the body", "body",
        R"x(<a href="javascript:alert(1)">x</a><a href="data:text/html,x">y</a>)x", "");
    row("remote image", "body", R"(<p><img src="http://tracker.example/p.gif" alt="pixel"></p>)", "");
    row("remote media and background", "body",
        R"(<table background="http://t.example/b.gif"><tr><td><video poster="http://t.example/p.jpg")"
        R"( src="http://t.example/v.mp4"></video></td></tr></table>)",
        "");
}

// Whatever a feed writes, a mail program reads the article back exactly, sees no extra header
// and no script, and fetches nothing.
void tst_FolderPlan::feedDataReadsBackAndStaysInert()
{
    QFETCH(QString, field);
    QFETCH(QString, value);
    QFETCH(QString, shown);
    ArticleMessage a;
    a.subscriptionId = 4;
    a.subject = QStringLiteral("Plain");
    a.feedTitle = QStringLiteral("Feed");
    a.bodyHtml = QStringLiteral("<p>Text</p>");
    a.date = QDateTime(QDate(2024, 5, 1), QTime(10, 0), Qt::UTC);
    a.enclosures = {{field == "enclosure" ? value : "http://example.com/a.mp3", "audio/mpeg", 1}};
    const QStringList names = {"subject", "feedTitle", "author", "link", "body"};
    QString *const texts[] = {&a.subject, &a.feedTitle, &a.author, &a.link, &a.bodyHtml};
    if (names.contains(field))
        *texts[names.indexOf(field)] = value;
    const ArticleHtml html;
    const QString page = html.page(a);
    const QByteArray message = MessageBuilder(html).build(a);
    GMimeSupport::initialiseOnce();
    Owned<GMimeStream> stream(g_mime_stream_mem_new_with_buffer(message.constData(), gsize(message.size())));
    Owned<GMimeParser> parser(g_mime_parser_new_with_stream(stream.get()));
    Owned<GMimeMessage> read(g_mime_parser_construct_message(parser.get(), nullptr));
    QVERIFY(read && !g_mime_object_get_header(GMIME_OBJECT(read.get()), "Bcc"));
    QCOMPARE(QString::fromUtf8(g_mime_message_get_subject(read.get())),
             field == "subject" && !shown.isEmpty() ? shown : a.subject);
    InternetAddress *from = internet_address_list_get_address(g_mime_message_get_from(read.get()), 0);
    QCOMPARE(QString::fromUtf8(internet_address_get_name(from)),
             field == "feedTitle" && !shown.isEmpty() ? shown : a.feedTitle);
    QCOMPARE(internet_address_mailbox_get_addr(INTERNET_ADDRESS_MAILBOX(from)), "feed-4@quillon.invalid");
    if (field == "author")
        QCOMPARE(QString::fromUtf8(g_mime_object_get_header(GMIME_OBJECT(read.get()), "X-Article-Author")),
                 shown.isEmpty() ? a.author : shown);
    QCOMPARE(qint64(g_date_time_to_unix(g_mime_message_get_date(read.get()))), a.date.toSecsSinceEpoch());
    GMimeMultipart *parts = GMIME_MULTIPART(g_mime_message_get_mime_part(read.get()));
    QCOMPARE(g_mime_multipart_get_count(parts), 2);
    for (const auto &[i, body] : {std::pair{0, MessageBuilder::textPart(a)}, std::pair{1, page}}) {
        const std::unique_ptr<char, decltype(&g_free)> text(
            g_mime_text_part_get_text(GMIME_TEXT_PART(g_mime_multipart_get_part(parts, i))), g_free);
        QCOMPARE(QByteArray(text.get()), body.toUtf8()); // decoded, byte for byte
    }
    static const QRegularExpression script(QStringLiteral("(href|src)=\"\\s*(javascript|data):"),
                                           QRegularExpression::CaseInsensitiveOption);
    QVERIFY2(!script.match(page).hasMatch(), qPrintable(page));
    QVERIFY(!page.contains(QLatin1String("<img"), Qt::CaseInsensitive));
    QVERIFY2(!page.contains(QRegularExpression(QStringLiteral("\\s(src|poster|background)="))),
             qPrintable(page));
    if (field == "body" && value.contains("pixel"))
        QVERIFY(page.contains(QLatin1String("href=\"http://tracker.example/p.gif\">[pixel]")));
}

// The README's command opens the delivered mail with every folder listed, and only those.
void tst_FolderPlan::neomuttListsEveryDeliveredFolder()
{
    if (QStandardPaths::findExecutable("neomutt").isEmpty() ||
        QStandardPaths::findExecutable("tmux").isEmpty())
        QSKIP("neomutt or tmux is not installed (scripts/setup-deps.sh installs both)");
    QTemporaryDir home;
    MaildirStore store(home.filePath(".local/share/Corvell/Mail"));
    QVERIFY(store.open(nullptr));
    for (const QStringList &folder : {QStringList{"Corvell for Outlook", "Tech", "Kernel Notes"},
                                      QStringList{"Corvell for Outlook", "World"}, QStringList{"Gone Feed"}})
        QVERIFY(store.create(folder, nullptr) && store.add(folder, "a1", "Subject: hi\n\nbody\n", nullptr));
    QVERIFY(store.commit(nullptr));
    store.removeAll({"Gone Feed"});

    const auto tmux = [](const QStringList &arguments) {
        QProcess run;
        run.start("tmux", QStringList{"-L", "quillon-mail-test", "-f", "/dev/null"} + arguments);
        run.waitForFinished();
        return QString::fromUtf8(run.readAllStandardOutput());
    };
    QVERIFY(QFile::exists(home.filePath(".local/share/Corvell/Mail/" + MailReaderConfig::kFileName)));
    tmux({"new-session", "-d", "-x", "160", "-y", "40",
          "export HOME='" + home.path() + "'; neomutt -F ~/.local/share/Corvell/Mail/neomuttrc"});
    QString screen;
    const auto listed = [&] {
        screen = tmux({"capture-pane", "-p"});
        return screen.contains("Corvell for Outlook") && screen.contains("Tech") &&
               screen.contains("Kernel Notes") && screen.contains("World");
    };
    const bool shown = QTest::qWaitFor(listed, 15000);
    tmux({"kill-server"});
    QVERIFY2(shown && !screen.contains("Gone Feed"), qPrintable(screen));
}

QTEST_GUILESS_MAIN(tst_FolderPlan)
#include "tst_FolderPlan.moc"
