#include "ArticlePublisher.h"
#include "ConsumerSettings.h"
#include "DaemonProcess.h"
#include "EngineClientTest.h"
#include "LocalHttpServer.h"
#include "MessagePublisher.h"
#include "PublishingUtils.h"
#include "TestFiles.h"
#include "TestRows.h"
#include "WordPressServer.h"
#include "frmPrePublish.h"
#include "frmPubSettings.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDirIterator>
#include <QJsonObject>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace quillon;
using namespace PublishingUtils;

namespace {
template <typename T = QAbstractButton> T *child(QWidget *dialog, const QString &name)
{
    return dialog->findChild<T *>(name);
}
} // namespace

// Adding weblogs and posting to them against a real WordPress; the pre-publish dialog alone.
class tst_WeblogPublishing : public EngineClientTest
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        EngineClientTest::initTestCase();
        if (!m_wordpress.start())
            qWarning() << "WordPress tests are skipped:" << m_wordpress.errorText();
        connect(&m_watch, &QTimer::timeout, this, &tst_WeblogPublishing::answerDialogs);
    }
    void init()
    {
        EngineClientTest::init();
        m_scripts.clear();
        m_watch.start(20);
    }
    void cleanup()
    {
        m_watch.stop();
        EngineClientTest::cleanup();
    }
    void addWeblog_data();
    void addWeblog();
    void prePublishDialog_data();
    void prePublishDialog();
    void publishArticle_data();
    void publishArticle();
    void publishDeliveredMessage_data();
    void publishDeliveredMessage();

private:
    [[nodiscard]] QString deliveredMessage();
    void needWordPress()
    {
        if (!m_wordpress.errorText().isEmpty())
            QSKIP(qPrintable("WordPress cannot run here: " + m_wordpress.errorText()));
    }
    // Each modal dialog, once, by the script for its class.
    void answerDialogs()
    {
        QWidget *dialog = QApplication::activeModalWidget();
        const auto script =
            dialog ? m_scripts.constFind(dialog->metaObject()->className()) : m_scripts.cend();
        if (script == m_scripts.cend() || dialog->property("answered").toBool())
            return;
        dialog->setProperty("answered", true);
        // From a timer of its own, so this one goes on to answer the dialogs the script opens.
        QTimer::singleShot(0, dialog, [dialog, answer = *script] { answer(dialog); });
    }
    [[nodiscard]] QString storedDefault(const QString &key) const
    {
        return GetConsumerSetting(*m_client, key, "unset", "ENGINE", "Publishing_defaults");
    }

    WordPressServer m_wordpress;
    QHash<QByteArray, std::function<void(QWidget *)>> m_scripts;
    QTimer m_watch;
    std::unique_ptr<DaemonProcess> m_daemon;
    LocalHttpServer m_feeds;
    QTemporaryDir m_mail;
};

void tst_WeblogPublishing::addWeblog_data()
{
    QTest::addColumn<QString>("service");
    QTest::addColumn<QStringList>("stored"); // titles of records already there; "HOME": this weblog
    QTest::addColumn<QString>("weblog");
    QTest::addColumn<QString>("postingAddress");
    QTest::addColumn<QString>("password");
    QTest::addColumn<bool>("keepPassword");
    QTest::addColumn<QString>("alert"); // empty: the weblog is added as record number
    QTest::addColumn<int>("number");
    const QString home = m_wordpress.home().toString();
    const QString good = WordPressServer::kPassword;
    const QString noUrl =
        "No valid publishing URL's found.  Please check the values you entered and try again.";
    const QString rest = "WordPress (application password)";
    const QStringList none;
    row("found from the weblog", "WordPress", none, home, "", good, true, "", 1);
    row("REST found from the weblog", rest, none, home, "", m_wordpress.applicationPassword(), true, "", 1);
    row("after 1 and 3, 2 deleted; password not kept", "MetaWeblog server",
        QStringList{"One", "DELETED", "Three"}, home, "", good, false, "", 4);
    row("Other asks for the posting address", "Other", none, "", "", good, true, "", 1);
    row("already configured", "WordPress", QStringList{"HOME"}, home, "", good, true,
        "You have already configured all available Weblogs for this publisher.", 0);
    row("REST, wrong password", rest, none, home, "", "wrong", true, "You are not currently logged in.", 0);
    row("wrong password", "WordPress", none, home, "", "wrong", true, "Incorrect username or password.", 0);
    row("no address given", "WordPress", none, "", "", good, true, noUrl, 0);
    row("page without RSD link", "WordPress", none, home + "readme.html", "", good, true, noUrl, 0);
    row("server unreachable", "WordPress", none, "", "http://127.0.0.1:9/xmlrpc.php", good, true,
        "The weblog server at http://127.0.0.1:9/xmlrpc.php", 0);
    row("no services", "", none, home, "", good, true, "No valid publishers found.", 0);
}

void tst_WeblogPublishing::addWeblog()
{
    QFETCH(QString, service);
    QFETCH(QStringList, stored);
    QFETCH(QString, weblog);
    QFETCH(QString, postingAddress);
    QFETCH(QString, password);
    QFETCH(bool, keepPassword);
    QFETCH(QString, alert);
    QFETCH(int, number);
    needWordPress();
    for (const QString &title : stored) {
        const bool home = title == "HOME";
        AddWeblog(*m_client,
                  {home ? WordPressServer::kTitle : title, "someone", "", 0, "http://a.example/x",
                   home ? m_wordpress.home().toString() : "http://a.example/" + title, "1", true, ""});
    }
    QStringList offered;
    bool okAfterClear = true;
    m_scripts["frmGetURL"] = [&](QWidget *dialog) {
        child<QLineEdit>(dialog, "txtWeblogName")->setText("Named by hand");
        child<QLineEdit>(dialog, "txtURL")->setText(m_wordpress.xmlrpc().toString());
        child(dialog, "cmdOK")->click();
    };
    m_scripts["frmChooseBlog"] = [&](QWidget *dialog) {
        auto *grid = child<QTableWidget>(dialog, "grdAvailableBlogs");
        for (int row = 0; row < grid->rowCount(); ++row)
            offered << grid->item(row, 1)->text();
        child(dialog, "chkAll")->click(); // a lone weblog comes ticked: clear it, then tick all
        okAfterClear = child(dialog, "cmdOK")->isEnabled();
        child(dialog, "chkAll")->click();
        child(dialog, "cmdOK")->click();
    };
    // After a message the dialog stays open for the values to be corrected.
    m_scripts["frmPubSettings"] = [&](QWidget *dialog) {
        child<QComboBox>(dialog, "cboBlogService")->setCurrentText(service);
        child<QLineEdit>(dialog, "txtBlogURL")->setText(weblog);
        child<QLineEdit>(dialog, "txtRPCURL")->setText(postingAddress);
        child<QLineEdit>(dialog, "txtPubPassword")->setText(password);
        child<QLineEdit>(dialog, "txtPubUsername")->setText(WordPressServer::kUser);
        child(dialog, "chkSavePassword")->setChecked(keepPassword);
        child(dialog, "cmdOK")->click();
        if (dialog->isVisible())
            child(dialog, "cmdCancel")->click();
    };
    QTemporaryDir empty;
    const int result =
        frmPubSettings(m_client, nullptr, service.isEmpty() ? empty.filePath("none.xml") : "").Run();

    QCOMPARE(result, alert.isEmpty() ? 1 : 2);
    if (!alert.isEmpty()) {
        QCOMPARE(m_prompts->texts().size(), qsizetype(1));
        QVERIFY2(m_prompts->texts().first().startsWith(alert), qPrintable(m_prompts->texts().first()));
        QCOMPARE(NextRecordNumber(*m_client), int(stored.size()) + 1);
        return;
    }
    QCOMPARE(offered, QStringList{WordPressServer::kTitle});
    QVERIFY(!okAfterClear);
    const WeblogSettings added = ReadWeblog(*m_client, number);
    const bool rest = service.endsWith("(application password)");
    QCOMPARE(
        (QStringList{added.title, added.user, added.password, QString::number(added.publisher), added.postUrl,
                     added.api, added.blogUrl, added.blogId, added.enabled ? "enabled" : "disabled"}),
        (QStringList{WordPressServer::kTitle, WordPressServer::kUser, keepPassword ? password : QString(),
                     "0", (rest ? m_wordpress.restRoot() : m_wordpress.xmlrpc()).toString(),
                     rest ? "WP-API" : "MetaWeblog", m_wordpress.home().toString(), "1", "enabled"}));
    QCOMPARE(NextRecordNumber(*m_client), number + 1);
}

void tst_WeblogPublishing::prePublishDialog_data()
{
    QTest::addColumn<bool>("saveMode");
    QTest::addColumn<QStringList>("clicks");
    QTest::addColumn<QStringList>("captions"); // at opening, then after each click of an option
    QTest::addColumn<QString>("storedEditFirst");
    row("edit first, then as is", false,
        QStringList{"optEditItem", "optPublishAsIs", "optEditItem", "cmdPublish"},
        QStringList{"Publish", "Create", "Publish", "Create"}, "1");
    row("cancel stores nothing", false, QStringList{"optEditItem", "chkIncludeAd", "cmdCancel"},
        QStringList{"Publish", "Create", "Create"}, "unset");
    row("save mode", true, QStringList{"optEditItem", "cmdPublish"}, QStringList{"Save", "Save"}, "1");
}

void tst_WeblogPublishing::prePublishDialog()
{
    QFETCH(bool, saveMode);
    QFETCH(QStringList, clicks);
    QFETCH(QString, storedEditFirst);
    QStringList seen;
    bool plainEnablesParsing = false;
    m_scripts["frmPrePublish"] = [&](QWidget *dialog) {
        seen << child(dialog, "cmdPublish")->text();
        child(dialog, "optPlainText")->click();
        plainEnablesParsing = child(dialog, "chkParseForInlineLinks")->isEnabled();
        for (const QString &name : clicks) {
            child(dialog, name)->click();
            if (!name.startsWith("cmd"))
                seen << child(dialog, "cmdPublish")->text();
        }
    };
    const int result = frmPrePublish(m_client).Run(saveMode);
    QTEST(seen, "captions");
    QVERIFY(plainEnablesParsing);
    const bool stored = storedEditFirst != "unset";
    QCOMPARE(result, stored ? 1 : 2);
    QCOMPARE(storedDefault("PUBDLG_editFirst"), storedEditFirst);
    QCOMPARE(storedDefault("PUBDLG_htmlBody"), stored ? "0" : "unset");
    QCOMPARE(storedDefault("PUBDLG_includeAd"), stored ? "0" : "unset");
}

void tst_WeblogPublishing::publishArticle_data()
{
    QTest::addColumn<bool>("keepPassword");
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("defaults"); // "as is", "edit first" or "quick"
    QTest::addColumn<QString>("alert");
    QTest::addColumn<QString>("api");
    const QString good = WordPressServer::kPassword;
    const QString published = "The item was published.";
    row("as is", true, good, "as is", published, "");
    row("edit first, password asked", false, good, "edit first", published, "");
    row("quick, wrong password", true, "wrong", "quick", "The item could not be published to Field Notes.",
        "");
    row("as is, through REST", true, m_wordpress.applicationPassword(), "as is", published, "WP-API");
}

void tst_WeblogPublishing::publishArticle()
{
    QFETCH(bool, keepPassword);
    QFETCH(QString, password);
    QFETCH(QString, defaults);
    QFETCH(QString, alert);
    QFETCH(QString, api);
    needWordPress();
    const QUrl postUrl = api.isEmpty() ? m_wordpress.xmlrpc() : m_wordpress.restRoot();
    AddWeblog(*m_client, {WordPressServer::kTitle, WordPressServer::kUser, keepPassword ? password : "", 0,
                          postUrl.toString(), m_wordpress.home().toString(), "1", true, api});
    SetConsumerSetting(*m_client, "ENGINE", "Publishing_defaults", "PUBDLG_editFirst",
                       defaults == "edit first" ? "1" : "0");
    SetConsumerSetting(*m_client, "ENGINE", "Publishing_defaults", "PUBDLG_alwaysDoCurrentSettings",
                       defaults == "quick" ? "1" : "0");
    m_prompts->onAsk = [&](Prompt &prompt) { prompt.password = password; };
    m_prompts->answers[int(PromptKind::UserNameAndPassword)] = {1};
    QString caption;
    m_scripts["frmPublishRequestOpt"] = [&](QWidget *dialog) {
        caption = child(dialog, "cmdPublish")->text();
        child(dialog, "cmdPublish")->click();
    };
    m_scripts["frmEditPost"] = [&](QWidget *dialog) {
        auto *body = child<QPlainTextEdit>(dialog, "txtPostBody");
        body->setPlainText("<p>Edited before posting.</p>" + body->toPlainText());
        child(dialog, "cmdPublish")->click();
    };
    const qsizetype before = m_wordpress.posts().size();
    const PostComposer::Article article{"High water",
                                        "http://example.org/river",
                                        "<p>The river is <b>high</b>.</p>",
                                        "Ada",
                                        "2026-11-20",
                                        "River News",
                                        "http://example.org/feed",
                                        "http://example.org/"};
    const bool posted = ArticlePublisher(m_client, nullptr).Publish(article);

    QCOMPARE(m_prompts->texts(PromptKind::Alert), QStringList{alert});
    QCOMPARE(m_prompts->texts(PromptKind::UserNameAndPassword).size(), qsizetype(keepPassword ? 0 : 1));
    QCOMPARE(caption, defaults == "quick" ? "" : defaults == "edit first" ? "Create" : "Publish");
    const QJsonArray posts = m_wordpress.posts();
    QCOMPARE(posts.size(), before + (posted ? 1 : 0));
    if (!posted)
        return;
    const QJsonObject post = posts.first().toObject();
    const QString content = post.value("content").toString();
    QCOMPARE(post.value("title").toString(), article.title);
    QVERIFY2(content.contains(article.body), qPrintable(content));
    QVERIFY(content.contains("<a href=\"http://example.org/river\">High water</a>"));
    QVERIFY(content.contains("Written by Ada on 2026-11-20."));
    QCOMPARE(content.startsWith("<p>Edited before posting.</p>"), defaults == "edit first");
}

// The message quillon-deliver wrote for the one article of a feed, on an engine that quick-publishes
// to the weblog; made once, empty when it could not be.
QString tst_WeblogPublishing::deliveredMessage()
{
    const auto message = [this] {
        QDirIterator found(m_mail.path(), {"*.quillon*"}, QDir::Files | QDir::Hidden,
                           QDirIterator::Subdirectories);
        return found.hasNext() ? found.next() : QString();
    };
    if (m_daemon)
        return message();
    m_daemon = std::make_unique<DaemonProcess>();
    if (!m_daemon->start() || !m_feeds.listen())
        return {};
    SubscribeClientPtr client = m_daemon->newClient();
    m_feeds.serve("/river",
                  "<rss version=\"2.0\"><channel><title>River News</title><link>http://example.org/</link>"
                  "<item><guid>flood-1</guid><title>Flood warning</title><link>http://example.org/flood"
                  "</link><author>Ada</author><pubDate>Fri, 20 Nov 2026 08:00:00 GMT</pubDate>"
                  "<description>&lt;p&gt;The river is &lt;b&gt;rising&lt;/b&gt;.&lt;/p&gt;</description>"
                  "</item></channel></rss>");
    const qint32 id =
        EngineCalls::AddSubscription(*client, "", m_feeds.url("/river").toString(), {}, {"OLCONSUMER"});
    if (!QTest::qWaitFor([&] { return EngineCalls::ItemText(*client, id, "ITEMUNREADCOUNT") == "1"; }, 30000))
        return {};
    QProcess deliver;
    deliver.start(DaemonProcess::executable("quillon-deliver"),
                  {"--socket", m_daemon->socketName(), "--maildir", m_mail.filePath("Mail"), "--once"});
    deliver.waitForFinished(60000);
    AddWeblog(*client, {WordPressServer::kTitle, WordPressServer::kUser, WordPressServer::kPassword, 0,
                        m_wordpress.xmlrpc().toString(), m_wordpress.home().toString(), "1", true, ""});
    SetConsumerSetting(*client, "ENGINE", "Publishing_defaults", "PUBDLG_alwaysDoCurrentSettings", "1");
    SetConsumerSetting(*client, "ENGINE", "Publishing_defaults", "PUBDLG_showSuccessDialog", "0");
    return message();
}

void tst_WeblogPublishing::publishDeliveredMessage_data()
{
    QTest::addColumn<QString>("how"); // "pipe" and "file" run quillon-publish; else the message changed so
    QTest::addColumn<int>("result");
    QTest::addColumn<QString>("error");
    row("piped to quillon-publish", "pipe", 0, "");
    row("named to quillon-publish", "file", 0, "");
    row("not a delivered message", "foreign", 2, "This is not a message the mail delivery wrote");
    row("article no longer kept", "gone", 2, "\"Dry spell\" is no longer among the articles of River News");
}

void tst_WeblogPublishing::publishDeliveredMessage()
{
    QFETCH(QString, how);
    QFETCH(int, result);
    QFETCH(QString, error);
    needWordPress();
    const QString path = deliveredMessage();
    QVERIFY2(!path.isEmpty(), qPrintable(m_daemon->errorText()));
    const qsizetype before = m_wordpress.posts().size();
    if (how == "pipe" || how == "file") {
        QProcess publish;
        publish.setProcessChannelMode(QProcess::ForwardedChannels);
        if (how == "pipe")
            publish.setStandardInputFile(path);
        publish.start(DaemonProcess::executable("quillon-publish"),
                      QStringList{"--socket", m_daemon->socketName()} +
                          (how == "file" ? QStringList{path} : QStringList()));
        QVERIFY(publish.waitForFinished(60000));
        QCOMPARE(publish.exitCode(), result);
    } else {
        QByteArray message = how == "foreign" ? "Subject: Flood warning\n\nA note.\n" : TestFiles::read(path);
        message.replace("Flood warning", "Dry spell")
            .replace("/flood", "/drought")
            .replace("Message-Id: <", "Message-Id: <0");
        MessagePublisher publisher(m_daemon->newClient());
        QCOMPARE(int(publisher.Publish(message)), result);
        QVERIFY2(publisher.Error().startsWith(error), qPrintable(publisher.Error()));
        QCOMPARE(m_prompts->texts(PromptKind::Alert),
                 QStringList{"The article of this message was not found."});
    }
    const QJsonArray posts = m_wordpress.posts();
    QCOMPARE(posts.size(), before + (result == 0 ? 1 : 0));
    if (result != 0)
        return;
    const QString content = posts.first().toObject().value("content").toString();
    QCOMPARE(posts.first().toObject().value("title").toString(), "Flood warning");
    QVERIFY2(content.contains("<p>The river is <b>rising</b>.</p>"), qPrintable(content));
    QVERIFY(content.contains("<a href=\"http://example.org/flood\">Flood warning</a>"));
    QVERIFY(content.contains("Written by Ada on 2026-11-20."));
}

QTEST_MAIN(tst_WeblogPublishing)
#include "tst_WeblogPublishing.moc"
