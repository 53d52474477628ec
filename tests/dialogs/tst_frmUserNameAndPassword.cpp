#include "EngineClientTest.h"
#include "PromptSeam.h"
#include "frmUserNameAndPassword.h"

#include <QTest>

using namespace EngineCalls;

namespace {
const QString kInvalidPrompt =
    QStringLiteral("The username/password for subscription '%1' is invalid.  Please enter a new one.");
}

class tst_frmUserNameAndPassword : public EngineClientTest
{
    Q_OBJECT

private:
    // Answers the next questions with the code and the login typed; keeps what was asked.
    void AnswerWith(int code, const QString &user, const QString &password)
    {
        m_prompts->answer = code;
        m_prompts->onAsk = [user, password](Prompt &prompt) {
            prompt.userName = user;
            prompt.password = password;
        };
    }
    [[nodiscard]] QString Item(qint32 id, const QString &name) { return ItemText(*m_client, id, name); }

private Q_SLOTS:
    void credentialsAreSentOnlyOnOKAndAskedAgainWhenRefused()
    {
        // An unknown subscription asks nothing.
        AnswerWith(1, "alice", "secret");
        QVERIFY(!frmUserNameAndPassword::Run(*m_client, 4242));
        QVERIFY(!frmUserNameAndPassword::Run(*m_client, quillon::kMissing));
        QVERIFY(m_prompts->asked.isEmpty());

        const QString url = "http://127.0.0.1:1/private.xml";
        const qint32 id = AddSubscription(*m_client, "Unknown", url);
        QVERIFY(id > 0);
        AnswerWith(0, "alice", "secret");
        QVERIFY(!frmUserNameAndPassword::Run(*m_client, id));
        QCOMPARE(m_prompts->asked.size(), 1);
        QCOMPARE(m_prompts->asked[0].mainText, frmUserNameAndPassword::PromptFor(url, false));
        QVERIFY(m_prompts->asked[0].mainText.contains(url));
        QVERIFY(m_prompts->asked[0].userName.isEmpty());
        QCOMPARE(Item(id, "USER"), quillon::kMissingText);

        // OK without a user name is no login either.
        AnswerWith(1, "  ", "secret");
        QVERIFY(!frmUserNameAndPassword::Run(*m_client, id));
        QCOMPARE(Item(id, "USER"), quillon::kMissingText);

        AnswerWith(1, "alice", "secret");
        QVERIFY(frmUserNameAndPassword::Run(*m_client, id));
        QCOMPARE(Item(id, "USER"), QString("alice"));
        QCOMPARE(Item(id, "PASSWORD"), QString("secret"));

        // The prompt a first-time login gets names the title, not the URL; a known user is told
        // the login failed.
        const qint32 members = AddSubscription(*m_client, "Members News", "http://127.0.0.1:1/members.xml");
        m_prompts->asked.clear();
        AnswerWith(1, "alice", "old");
        QVERIFY(frmUserNameAndPassword::Run(*m_client, members));
        QVERIFY(m_prompts->asked[0].mainText.contains("Members News"));
        AnswerWith(1, "alice", "new");
        QVERIFY(frmUserNameAndPassword::Run(*m_client, members));
        QCOMPARE(m_prompts->asked.size(), 2);
        QCOMPARE(m_prompts->asked[1].mainText, kInvalidPrompt.arg("Members News"));
        QCOMPARE(m_prompts->asked[1].userName, QString("alice"));
        QCOMPARE(Item(members, "PASSWORD"), QString("new"));
    }
};

QTEST_MAIN(tst_frmUserNameAndPassword)
#include "tst_frmUserNameAndPassword.moc"
