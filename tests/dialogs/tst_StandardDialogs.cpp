#include "PromptSeam.h"
#include "StandardDialogs.h"
#include "localization.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <functional>

Q_DECLARE_METATYPE(PromptKind)

class tst_StandardDialogs : public QObject
{
    Q_OBJECT

private:
    // Runs action on the modal dialog as soon as it is up; exec() blocks the test meanwhile.
    void WhenShown(std::function<void(QDialog *)> action)
    {
        m_poll.disconnect();
        connect(&m_poll, &QTimer::timeout, this, [this, action] {
            if (auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget())) {
                m_poll.stop();
                action(dialog);
            }
        });
        m_poll.start(10);
    }
    static void Click(QDialog *dialog, const QString &name)
    {
        auto *button = dialog->findChild<QAbstractButton *>(name);
        QVERIFY2(button, qPrintable(name));
        button->click();
    }

    static Prompt MakePrompt(PromptKind kind, const QString &mainText, const QString &extendedText = {})
    {
        Prompt prompt;
        prompt.kind = kind;
        prompt.mainText = mainText;
        prompt.extendedText = extendedText;
        return prompt;
    }

    QTimer m_poll;

private Q_SLOTS:
    void initTestCase() { LoadStrings(qEnvironmentVariable("QUILLON_SOURCE_DIR") + "/data/QuillonData"); }

    void cleanup()
    {
        m_poll.stop();
        PromptSeam::SetHandler({});
    }

    void proceduresAnswerOnlyWithTheirDialogsCodes()
    {
        int reply = 0;
        QList<Prompt> asked;
        PromptSeam::SetHandler([&](Prompt &prompt) {
            asked.append(prompt);
            prompt.suppressChecked = true;
            return reply;
        });

        ShowAlert(nullptr, "Fetch failed", "The server did not answer.");
        QCOMPARE(asked.last().kind, PromptKind::Alert);
        QCOMPARE(asked.last().extendedText, QString("The server did not answer."));

        reply = 6;
        QCOMPARE(AskQuestion(nullptr, "Apply?", "", "adds"), 6);
        QCOMPARE(asked.last().kind, PromptKind::YesNo);
        reply = 2;
        QCOMPARE(AskQuestion(nullptr, "Apply?", "", "adds"), 7);

        reply = 7;
        QCOMPARE(AskDoYouWantToSave(nullptr, "Save?", ""), 7);
        reply = 1;
        QCOMPARE(AskDoYouWantToSave(nullptr, "Save?", ""), 2);

        reply = 7;
        const AreYouSureAnswer refused = AskAreYouSure(nullptr, "Delete?", "");
        QCOMPARE(refused.result, 2);
        QVERIFY(refused.suppressWarnings);
        reply = 6;
        QCOMPARE(AskAreYouSure(nullptr, "Delete?", "").result, 6);
    }

    void formsCloseWithTheirButtonCodes_data()
    {
        QTest::addColumn<PromptKind>("kind");
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("expected");
        const QString escape = "<Escape>";
        QTest::newRow("alert OK") << PromptKind::Alert << "cmdOK" << 1;
        QTest::newRow("yes/no yes") << PromptKind::YesNo << "cmdYes" << 6;
        QTest::newRow("yes/no no") << PromptKind::YesNo << "cmdNo" << 7;
        QTest::newRow("yes/no escape") << PromptKind::YesNo << escape << 7;
        QTest::newRow("save yes") << PromptKind::DoYouWantToSave << "cmdYes" << 6;
        QTest::newRow("save no") << PromptKind::DoYouWantToSave << "cmdNo" << 7;
        QTest::newRow("save cancel") << PromptKind::DoYouWantToSave << "cmdCancel" << 2;
        QTest::newRow("save escape") << PromptKind::DoYouWantToSave << escape << 2;
        QTest::newRow("sure yes") << PromptKind::AreYouSure << "cmdYes" << 6;
        QTest::newRow("sure cancel") << PromptKind::AreYouSure << "cmdCancel" << 2;
        QTest::newRow("sure escape") << PromptKind::AreYouSure << escape << 2;
        QTest::newRow("enclosure yes") << PromptKind::EnclosureWarning << "cmdYes" << 1;
        QTest::newRow("enclosure no") << PromptKind::EnclosureWarning << "cmdNo" << 0;
        QTest::newRow("enclosure escape") << PromptKind::EnclosureWarning << escape << 0;
    }

    void formsCloseWithTheirButtonCodes()
    {
        QFETCH(PromptKind, kind);
        QFETCH(QString, button);
        QFETCH(int, expected);
        InstallDialogPrompts();
        QString shownText;
        WhenShown([&](QDialog *dialog) {
            const auto labels = dialog->findChildren<QLabel *>();
            for (const QLabel *label : labels)
                shownText += label->isVisibleTo(dialog) ? label->text() : QString();
            if (button.startsWith('<'))
                QTest::keyClick(dialog, Qt::Key_Escape);
            else
                Click(dialog, button);
        });
        Prompt prompt = MakePrompt(kind, "Main words", "More words");
        QCOMPARE(PromptSeam::Ask(prompt), expected);
        QVERIFY(shownText.contains("Main words"));
    }

    void checkBoxesComeBackWithTheAnswer()
    {
        InstallDialogPrompts();
        WhenShown([](QDialog *dialog) {
            dialog->findChild<QCheckBox *>("chkSupressWarnings")->setChecked(true);
            QTest::keyClick(dialog, Qt::Key_Escape);
        });
        const AreYouSureAnswer answer = AskAreYouSure(nullptr, "Delete?", "");
        QCOMPARE(answer.result, 2);
        QVERIFY(answer.suppressWarnings);

        WhenShown([](QDialog *dialog) {
            dialog->findChild<QCheckBox *>("checkboxApplyToAllSubscriptions")->setChecked(true);
            Click(dialog, "cmdYes");
        });
        Prompt enclosure = MakePrompt(PromptKind::EnclosureWarning, "Download?");
        QCOMPARE(PromptSeam::Ask(enclosure), 1);
        QVERIFY(enclosure.applyToAll);
    }

    void loginFormNeedsAUserNameAndReturnsWhatWasTyped()
    {
        InstallDialogPrompts();
        bool okWithoutName = true;
        WhenShown([&](QDialog *dialog) {
            auto *user = dialog->findChild<QLineEdit *>("txtUserName");
            auto *ok = dialog->findChild<QPushButton *>("cmdOK");
            QCOMPARE(user->text(), QString("bob"));
            user->clear();
            okWithoutName = ok->isEnabled();
            QTest::keyClicks(user, "carol");
            QTest::keyClicks(dialog->findChild<QLineEdit *>("txtPasswordField"), "pw");
            QTest::keyClick(dialog, Qt::Key_Return);
        });
        Prompt login = MakePrompt(PromptKind::UserNameAndPassword, "Login?");
        login.userName = "bob";
        QCOMPARE(PromptSeam::Ask(login), 1);
        QVERIFY(!okWithoutName);
        QCOMPARE(login.userName, QString("carol"));
        QCOMPARE(login.password, QString("pw"));
    }
};

QTEST_MAIN(tst_StandardDialogs)
#include "tst_StandardDialogs.moc"
