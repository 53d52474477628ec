#include "ConsumerSettings.h"
#include "EngineClientTest.h"
#include "ExportUI.h"
#include "TestFiles.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>

using namespace quillon;

namespace {
// The outline tree as the engine reads it back: "folder/" lines, feeds by title, two blanks a level.
QStringList Outline(const ListPtr &outlines, int level = 0)
{
    QStringList lines;
    for (const PropertyValue &value : outlines ? outlines->items() : QList<PropertyValue>()) {
        const BagPtr outline = std::get<BagPtr>(value);
        const QString indent(level * 2, QLatin1Char(' '));
        if (outline->contains("xmlUrl")) {
            lines << indent + outline->text("title") + " <" + outline->text("xmlUrl") + ">";
        } else {
            lines << indent + outline->text("title") + "/";
            lines << Outline(outline->list("children"), level + 1);
        }
    }
    return lines;
}
} // namespace

class tst_ExportUI : public EngineClientTest
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup()
    {
        m_page.reset();
        EngineClientTest::cleanup();
    }
    void exportedFileReadsBackWithItsFolders();
    void replacingAFileIsAsked_data();
    void replacingAFileIsAsked();

private:
    void openPage();
    void check(int row) { grid()->item(row, 0)->setCheckState(Qt::Checked); }
    void pressExport() { m_page->findChild<QPushButton *>("cmdExport")->click(); }
    [[nodiscard]] QTableWidget *grid() const { return m_page->findChild<QTableWidget *>("grdSubscriptions"); }
    [[nodiscard]] QStringList readBack(const QString &path);

    std::unique_ptr<ExportUI> m_page;
    QStringList m_filters;
};

void tst_ExportUI::init()
{
    EngineClientTest::init();
    m_filters.clear();
    const QList<std::pair<const char *, const char *>> feeds = {{"World", "News~~~World"},
                                                                {"Local", "News"},
                                                                {"Skipped", "News~~~World"},
                                                                {"Loose", ""},
                                                                {"Mars", "Space"}};
    for (const auto &[title, category] : feeds)
        QVERIFY(EngineCalls::AddSubscription(*m_client, title, QString("http://127.0.0.1:9/") + title,
                                             category) > 0);
}

void tst_ExportUI::openPage()
{
    m_page = std::make_unique<ExportUI>(m_client);
    m_page->SetFileChooser([this](QWidget *, const QString &filter) {
        m_filters << filter;
        return m_settings.filePath("my feeds.opml");
    });
    m_page->show();
    QTRY_COMPARE(grid()->rowCount(), 5);
}

QStringList tst_ExportUI::readBack(const QString &path)
{
    const BagPtr result =
        EngineCalls::Request(*m_client, {{"REQUEST", "FETCHOPML"},
                                         {"CLASS", "NEWS"},
                                         {"URL", "file://loopback/" + QString(path).replace(' ', "%20")}})
            ->bag("Result");
    return result ? Outline(result->list("SubscriptionList")) : QStringList{"no result"};
}

void tst_ExportUI::exportedFileReadsBackWithItsFolders()
{
    openPage();
    m_page->findChild<QCheckBox *>("chkAll")->click();
    grid()->item(2, 0)->setCheckState(Qt::Unchecked);
    m_page->findChild<QLineEdit *>("txtExportTitle")->setText("Evening reading");
    pressExport();

    QCOMPARE(m_filters,
             QStringList{"OPML files (*.opml)|*.opml|XML files (*.opml, *.xml, *.rss, *.atom, *.rdf)|"
                         "*.opml;*.xml;*.rss;*.atom;*.rdf|All files (*.*)|*.*"});
    const QStringList expected = {"News/",
                                  "  World/",
                                  "    World <http://127.0.0.1:9/World>",
                                  "  Local <http://127.0.0.1:9/Local>",
                                  "Space/",
                                  "  Mars <http://127.0.0.1:9/Mars>",
                                  "Loose <http://127.0.0.1:9/Loose>"};
    QCOMPARE(readBack(m_settings.filePath("my feeds.opml")), expected);
    const QByteArray text = TestFiles::read(m_settings.filePath("my feeds.opml"));
    QVERIFY(text.contains("<opml version=\"2.0\">"));
    QVERIFY(text.contains("<title>Evening reading</title>"));
    QCOMPARE(GetConsumerSetting(*m_client, "LastExportTitle", "", "CONFIGCONSUMER", ""), "Evening reading");
}

void tst_ExportUI::replacingAFileIsAsked_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("replaced");
    QTest::newRow("yes replaces") << 6 << true;
    QTest::newRow("no keeps the file") << 7 << false;
}

void tst_ExportUI::replacingAFileIsAsked()
{
    QFETCH(int, answer);
    QVERIFY(TestFiles::write(m_settings.filePath("my feeds.opml"), "old"));
    m_prompts->answer = answer;
    openPage();
    // Nothing checked: nothing is asked for.
    pressExport();
    QVERIFY(m_filters.isEmpty());
    check(4);
    pressExport();
    QCOMPARE(m_prompts->texts(PromptKind::YesNo), QStringList{"The file my feeds.opml already exists."});
    QTEST(TestFiles::read(m_settings.filePath("my feeds.opml")).startsWith("<?xml"), "replaced");
}

QTEST_MAIN(tst_ExportUI)
#include "tst_ExportUI.moc"
