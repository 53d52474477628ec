#include "MailStoreOutlook.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

// The delivery's Maildir tree seen through the Outlook namespace the editors use.
class tst_MailStoreOutlook : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answersWithTheDeliveryStore();
};

void tst_MailStoreOutlook::answersWithTheDeliveryStore()
{
    QTemporaryDir dir;
    const QString root = dir.filePath("Mail");
    for (const char *folder : {"cur", ".Feeds/cur", ".Feeds.Tech News/cur", "not-a-folder"})
        QVERIFY(QDir().mkpath(root + "/" + folder));

    qputenv("QUILLON_MAILDIR", root.toLocal8Bit());
    MailStoreOutlook::Install();
    const OutlookPtr outlook = GetOutlookNamespace();
    QVERIFY(outlook);
    QCOMPARE(outlook->FolderPaths(), (QStringList{"\\", "\\Feeds", "\\Feeds\\Tech News"}));

    // A "personal folders" file is a new Maildir tree; the file ending goes.
    QVERIFY(outlook->CreatePersonalFolders(dir.filePath("Second.pst"), "Corvell for Outlook"));
    for (const char *sub : {"cur", "new", "tmp"})
        QVERIFY(QDir(dir.filePath("Second")).exists(sub));
    QVERIFY(!outlook->CreatePersonalFolders(".pst", "x"));
    SetOutlookProvider({});
}

QTEST_MAIN(tst_MailStoreOutlook)
#include "tst_MailStoreOutlook.moc"
