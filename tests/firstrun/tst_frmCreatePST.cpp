#include "ConsumerSettings.h"
#include "LinkedSubscribeClient.h"
#include "PromptRecorder.h"
#include "TestEngine.h"
#include "TestRows.h"
#include "frmCreatePST.h"

#include <QCheckBox>
#include <QFileInfo>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

// The dialog that names a new store: the proposal, the refusal of an empty field, and the four
// keys the delivery acts on.
class tst_frmCreatePST : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void acceptsOnlyANameAndALocation_data();
    void acceptsOnlyANameAndALocation();
};

void tst_frmCreatePST::acceptsOnlyANameAndALocation_data()
{
    QTest::addColumn<QString>("name");   // typed before choosing
    QTest::addColumn<QString>("chosen"); // what the chooser answers
    QTest::addColumn<bool>("move");
    QTest::addColumn<QStringList>("stored"); // name, folder, file, mode; empty when refused

    row("nothing chosen", "", "", false, QStringList());
    row("a name without a location", "Feeds", "", false, QStringList());
    row("blank name", "   ", "/srv/mail/x.pst", false, QStringList());
    row("the chosen file names it", "", "/srv/mail/News of the day.pst", false,
        QStringList{"News of the day", "/srv/mail", "News of the day.pst", "0"});
    row("a typed name stays, mail moves", "Feeds", "/srv/mail/archive.pst", true,
        QStringList{"Feeds", "/srv/mail", "archive.pst", "1"});
}

void tst_frmCreatePST::acceptsOnlyANameAndALocation()
{
    QFETCH(QString, name);
    QFETCH(QString, chosen);
    QFETCH(bool, move);
    QFETCH(QStringList, stored);
    TestEngine engine;
    QVERIFY(engine.isReady());
    const auto client = engine.newClient();
    PromptRecorder prompts;
    frmCreatePST dialog;
    QString proposed;
    QStringList asked;
    dialog.SetFileChooser([&](QWidget *, const QString &title, const QString &filter, const QString &path) {
        proposed = path;
        asked << title << filter;
        return chosen;
    });
    dialog.findChild<QLineEdit *>("txtCustomPSTName")->setText(name);
    dialog.findChild<QCheckBox *>("chkMoveExistingData")->setChecked(move);
    dialog.show();
    dialog.findChild<QPushButton *>("cmdChoosePath")->click();
    QCOMPARE(asked, QStringList({"Choose a location...", "Outlook Data Files (*.pst)|*.pst"}));
    QVERIFY(proposed.endsWith(".pst"));
    // Unnamed, the date is proposed, without the characters a file name cannot hold.
    const QString proposedName = QFileInfo(proposed).fileName();
    QVERIFY(name.isEmpty() ? proposedName.startsWith("Corvell for Outlook ") && !proposedName.contains(':')
                           : proposedName.startsWith(name));
    dialog.findChild<QPushButton *>("cmdOK")->click();

    QCOMPARE(dialog.isVisible(), stored.isEmpty());
    QCOMPARE(prompts.texts(PromptKind::Alert),
             stored.isEmpty() ? QStringList{frmCreatePST::kMissingText} : QStringList());
    QCOMPARE(dialog.GetResults(*client), stored.isEmpty() ? 0 : 1);
    QStringList written;
    for (const char *key :
         {"MakeNewPST_DisplayName", "MakeNewPST_path", "MakeNewPST_fileName", "MakeNewPST_mode"})
        written << GetConsumerSetting(*client, key, "-237237", "OLCONSUMER", "OutlookDefaults");
    QCOMPARE(written, stored.isEmpty() ? QStringList(4, "-237237") : stored);
}

QTEST_MAIN(tst_frmCreatePST)
#include "tst_frmCreatePST.moc"
