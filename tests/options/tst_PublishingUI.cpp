#include "ConsumerSettings.h"
#include "EngineClientTest.h"
#include "PublishingUI.h"
#include "PublishingUtils.h"
#include "TestRows.h"

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>
#include <QTimer>

using namespace quillon;

class tst_PublishingUI : public EngineClientTest
{
    Q_OBJECT
private Q_SLOTS:
    void cleanup()
    {
        m_page.reset();
        EngineClientTest::cleanup();
    }
    void listShowsLiveRecordsOnly_data();
    void listShowsLiveRecordsOnly();
    void editDeleteAndQuickPublish();

private:
    void store(const QStringList &titles);
    [[nodiscard]] QStringList shownTitles() const;
    template <typename T> T *child(const char *name) const { return m_page->findChild<T *>(name); }

    std::unique_ptr<PublishingUI> m_page;
};

// Records 1, 2, ... with these titles; every other one takes part in quick publishing.
void tst_PublishingUI::store(const QStringList &titles)
{
    for (int i = 0; i < titles.size(); ++i) {
        PublishingUtils::SetRecordValue(*m_client, i + 1, "blog_name", titles.at(i));
        PublishingUtils::SetRecordValue(*m_client, i + 1, "publisher", QString::number(i % 4));
        PublishingUtils::SetRecordValue(*m_client, i + 1, "enabled", i % 2 ? "0" : "1");
    }
}

QStringList tst_PublishingUI::shownTitles() const
{
    QStringList titles;
    auto *grid = child<QTableWidget>("grdWeblogs");
    for (int row = 0; row < grid->rowCount(); ++row)
        titles << grid->item(row, 1)->text() + " / " + grid->item(row, 2)->text();
    return titles;
}

void tst_PublishingUI::listShowsLiveRecordsOnly_data()
{
    QTest::addColumn<QStringList>("stored");
    QTest::addColumn<QStringList>("shown");
    QTest::addColumn<QStringList>("quickPublish");
    QTest::addColumn<int>("next");
    const QStringList none;
    row("none stored", none, none, none, 1);
    row("2 of 3 deleted", QStringList{"One", "DELETED", "Three"},
        QStringList{"One / Other", "Three / Blogger"}, QStringList{"One", "Three"}, 4);
    row("only deleted", QStringList{"DELETED"}, none, none, 2);
    row("services by name", QStringList{"A", "B", "C", "D"},
        QStringList{"A / Other", "B / TypePad", "C / Blogger", "D / LiveJournal"}, QStringList{"A", "C"}, 5);
}

void tst_PublishingUI::listShowsLiveRecordsOnly()
{
    QFETCH(QStringList, stored);
    QFETCH(QStringList, shown);
    store(stored);
    m_page = std::make_unique<PublishingUI>(m_client);
    QCOMPARE(shownTitles(), shown);
    QCOMPARE(child<QPushButton>("cmdEditBlog")->isEnabled(), !shown.isEmpty());
    QCOMPARE(child<QPushButton>("cmdDeleteBlog")->isEnabled(), !shown.isEmpty());
    QTEST(PublishingUtils::EnumerateWeblogs(*m_client, true, "blog_name"), "quickPublish");
    QTEST(PublishingUtils::NextRecordNumber(*m_client), "next");
    QVERIFY(!m_page->Dirty());
}

void tst_PublishingUI::editDeleteAndQuickPublish()
{
    store({"One", "Two", "Three"});
    m_page = std::make_unique<PublishingUI>(m_client);
    m_page->show();

    // Edit the second weblog: the dialog is titled after it and writes back on OK.
    child<QTableWidget>("grdWeblogs")->selectRow(1);
    QString caption;
    QTimer::singleShot(0, this, [&] {
        QWidget *dialog = QApplication::activeModalWidget();
        QVERIFY(dialog);
        caption = dialog->windowTitle();
        dialog->findChild<QLineEdit *>("txtBlogName")->setText("Second");
        dialog->findChild<QPushButton *>("cmdOK")->click();
    });
    child<QPushButton>("cmdEditBlog")->click();
    QCOMPARE(caption, "Two Settings");
    QCOMPARE(shownTitles(), (QStringList{"One / Other", "Second / TypePad", "Three / Blogger"}));

    // Delete the first: its number stays taken.
    child<QTableWidget>("grdWeblogs")->selectRow(0);
    child<QPushButton>("cmdDeleteBlog")->click();
    QCOMPARE(shownTitles(), (QStringList{"Second / TypePad", "Three / Blogger"}));
    QCOMPARE(PublishingUtils::RecordValue(*m_client, 1, "blog_name"), "DELETED");
    QCOMPARE(PublishingUtils::NextRecordNumber(*m_client), 4);

    // Ticking quick publishing is a change that Apply stores.
    child<QTableWidget>("grdWeblogs")->item(0, 0)->setCheckState(Qt::Checked);
    QVERIFY(m_page->Dirty());
    m_page->Apply();
    QCOMPARE(PublishingUtils::EnumerateWeblogs(*m_client, true, "blog_name"),
             (QStringList{"Second", "Three"}));
}

QTEST_MAIN(tst_PublishingUI)
#include "tst_PublishingUI.moc"
