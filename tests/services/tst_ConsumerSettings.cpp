#include "ConsumerSettings.h"
#include "HandleGuard.h"
#include "LinkedSubscribeClient.h"
#include "TestEngine.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {
// A link whose engine refuses every operation, as a lost connection does.
class RefusingLink : public quillon::EngineLink
{
public:
    quillon::PropertyValue call(const QString &operation, const QList<quillon::PropertyValue> &) override
    {
        throw quillon::EngineError(operation + u" refused"_s);
    }
    void setMessageSink(MessageSink) override {}
    bool isConnected() const override { return false; }
};
} // namespace

class tst_ConsumerSettings : public QObject
{
    Q_OBJECT

private slots:
    void valuesRoundTripAndMissingKeysReadAsTheDefault();
    void failingEngineLeaksNoHandle();
};

void tst_ConsumerSettings::valuesRoundTripAndMissingKeysReadAsTheDefault()
{
    TestEngine engine;
    QVERIFY(engine.isReady());
    const auto writer = engine.newClient();
    const auto reader = engine.newClient();
    QCOMPARE(GetConsumerSetting(*reader, u"MakeNewPST_path"_s, u"-237237"_s, u"OLCONSUMER"_s,
                                u"OutlookDefaults"_s),
             u"-237237"_s);
    const QString section = u"SubscriptionSpecifics_7"_s;
    SetConsumerSetting(*writer, u"OLCONSUMER"_s, section, u"FOLDERTITLE"_s, u"News"_s);
    SetConsumerSettingBool(*writer, u"MEDIACONSUMER"_s, section, u"EnableAutoDownload"_s, true);
    QCOMPARE(GetConsumerSetting(*reader, u"FOLDERTITLE"_s, u"x"_s, u"OLCONSUMER"_s, section), u"News"_s);
    QCOMPARE(GetConsumerSetting(*reader, u"EnableAutoDownload"_s, u"0"_s, u"MEDIACONSUMER"_s, section),
             u"1"_s);
    QCOMPARE(writer->LiveHandleCount(), 0);
    QCOMPARE(reader->LiveHandleCount(), 0);
}

void tst_ConsumerSettings::failingEngineLeaksNoHandle()
{
    const auto client = quillon::LinkedSubscribeClient::create(std::make_unique<RefusingLink>());
    QVERIFY_THROWS_EXCEPTION(quillon::EngineError,
                             (void)GetConsumerSetting(*client, u"k"_s, u"d"_s, u"ENGINE"_s, QString()));
    QVERIFY_THROWS_EXCEPTION(quillon::EngineError,
                             SetConsumerSetting(*client, u"ENGINE"_s, QString(), u"k"_s, u"v"_s));
    QCOMPARE(client->LiveHandleCount(), 0);

    // A guard handed on by moving releases once, in its new owner.
    {
        HandleGuard first(*client, client->NewBag());
        HandleGuard second(std::move(first));
        QVERIFY(!first.isValid());
        QCOMPARE(client->LiveHandleCount(), 1);
    }
    QCOMPARE(client->LiveHandleCount(), 0);
}

QTEST_GUILESS_MAIN(tst_ConsumerSettings)
#include "tst_ConsumerSettings.moc"
