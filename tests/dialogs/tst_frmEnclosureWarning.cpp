#include "ConsumerSettings.h"
#include "EngineClientTest.h"
#include "PromptSeam.h"
#include "commonUtils.h"
#include "frmEnclosureWarning.h"

#include <QTest>

using namespace EngineCalls;

class tst_frmEnclosureWarning : public EngineClientTest
{
    Q_OBJECT

private:
    [[nodiscard]] QString Media(const QString &section, const QString &key)
    {
        return GetConsumerSetting(*m_client, key, quillon::kMissingText, QStringLiteral("MEDIACONSUMER"),
                                  section);
    }
    // Answers every question with the given code and box state; counts the questions.
    void AnswerWith(int code, bool applyToAll)
    {
        m_prompts->answer = code;
        m_prompts->onAsk = [applyToAll](Prompt &prompt) { prompt.applyToAll = applyToAll; };
    }

private Q_SLOTS:
    void answerIsStoredPerSubscriptionAndGloballyOnlyWhenAsked()
    {
        // An unknown subscription asks nothing and writes nothing.
        AnswerWith(1, true);
        for (qint32 id : {0, -5, quillon::kMissing, 4242})
            QCOMPARE(frmEnclosureWarning::Run(*m_client, id), 0);
        QVERIFY(m_prompts->asked.isEmpty());
        QCOMPARE(Media("Settings", "EnableAutoDownload"), quillon::kMissingText);
        QCOMPARE(Media(SubscriptionSpecificsSection(4242), "EnableAutoDownload"), quillon::kMissingText);

        const qint32 first = AddSubscription(*m_client, "Radio Hour", "http://127.0.0.1:1/radio.xml");
        const qint32 second = AddSubscription(*m_client, "Talk Show", "http://127.0.0.1:1/talk.xml");
        QVERIFY(first > 0 && second > 0);

        AnswerWith(1, false);
        QCOMPARE(frmEnclosureWarning::Run(*m_client, first), 1);
        QCOMPARE(m_prompts->asked.size(), 1);
        QVERIFY(m_prompts->asked[0].mainText.contains("Radio Hour"));
        QVERIFY(!m_prompts->asked[0].mainText.contains("^1"));
        QCOMPARE(Media(SubscriptionSpecificsSection(first), "EnableAutoDownload"), QString("1"));
        QCOMPARE(Media(SubscriptionSpecificsSection(first), "PromptForAutoDownload"), QString("0"));
        QCOMPARE(Media("Settings", "EnableAutoDownload"), quillon::kMissingText);
        QCOMPARE(Media("Settings", "PromptForAutoDownload"), quillon::kMissingText);

        AnswerWith(0, true);
        QCOMPARE(frmEnclosureWarning::Run(*m_client, second), 0);
        QCOMPARE(Media(SubscriptionSpecificsSection(second), "EnableAutoDownload"), QString("0"));
        QCOMPARE(Media("Settings", "EnableAutoDownload"), QString("0"));
        QCOMPARE(Media("Settings", "PromptForAutoDownload"), QString("0"));
        // The first subscription keeps its own answer.
        QCOMPARE(Media(SubscriptionSpecificsSection(first), "EnableAutoDownload"), QString("1"));

        // Only Yes (1) means yes; a message-box Yes (6) from a handler does not.
        AnswerWith(6, false);
        QCOMPARE(frmEnclosureWarning::Run(*m_client, first), 0);
        QCOMPARE(Media(SubscriptionSpecificsSection(first), "EnableAutoDownload"), QString("0"));
    }
};

QTEST_MAIN(tst_frmEnclosureWarning)
#include "tst_frmEnclosureWarning.moc"
