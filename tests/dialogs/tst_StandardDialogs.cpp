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

    // A row may tick a box first; its state comes back with the answer.
    void formsCloseWithTheirButtonCodes_data()
    {
        QTest::addColumn<PromptKind>("kind");
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("expected");
        QTest::addColumn<QString>("tick");
        const QString escape = "<Escape>", suppress = "chkSupressWarnings";
        const QString toAll = "checkboxApplyToAllSubscriptions";
        QTest::newRow("alert OK") << PromptKind::Alert << "cmdOK" << 1 << QString();
        QTest::newRow("yes/no yes") << PromptKind::YesNo << "cmdYes" << 6 << QString();
        QTest::newRow("yes/no no") << PromptKind::YesNo << "cmdNo" << 7 << QString();
        QTest::newRow("yes/no escape") << PromptKind::YesNo << escape << 7 << QString();
        QTest::newRow("save yes") << PromptKind::DoYouWantToSave << "cmdYes" << 6 << QString();
        QTest::newRow("save no") << PromptKind::DoYouWantToSave << "cmdNo" << 7 << QString();
        QTest::newRow("save cancel") << PromptKind::DoYouWantToSave << "cmdCancel" << 2 << QString();
        QTest::newRow("save escape") << PromptKind::DoYouWantToSave << escape << 2 << QString();
        QTest::newRow("sure yes") << PromptKind::AreYouSure << "cmdYes" << 6 << QString();
        QTest::newRow("sure cancel") << PromptKind::AreYouSure << "cmdCancel" << 2 << QString();
        QTest::newRow("sure escape, ticked") << PromptKind::AreYouSure << escape << 2 << suppress;
        QTest::newRow("enclosure yes, ticked") << PromptKind::EnclosureWarning << "cmdYes" << 1 << toAll;
        QTest::newRow("enclosure no") << PromptKind::EnclosureWarning << "cmdNo" << 0 << QString();
        QTest::newRow("enclosure escape") << PromptKind::EnclosureWarning << escape << 0 << QString();
    }

    void formsCloseWithTheirButtonCodes()
    {
        QFETCH(PromptKind, kind);
        QFETCH(QString, button);
        QFETCH(int, expected);
        QFETCH(QString, tick);
        InstallDialogPrompts();
        QString shownText;
        WhenShown([&](QDialog *dialog) {
            const auto labels = dialog->findChildren<QLabel *>();
            for (const QLabel *label : labels)
                shownText += label->isVisibleTo(dialog) ? label->text() : QString();
            if (!tick.isEmpty())
                dialog->findChild<QCheckBox *>(tick)->setChecked(true);
            if (button.startsWith('<'))
                QTest::keyClick(dialog, Qt::Key_Escape);
            else
                Click(dialog, button);
        });
        Prompt prompt = MakePrompt(kind, "Main words", "More words");
        QCOMPARE(PromptSeam::Ask(prompt), expected);
        QVERIFY(shownText.contains("Main words"));
        QCOMPARE(prompt.suppressChecked || prompt.applyToAll, !tick.isEmpty());
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
