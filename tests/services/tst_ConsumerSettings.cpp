#include "ConsumerSettings.h"
#include "HandleGuard.h"
#include "LinkedSubscribeClient.h"

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
    void failingEngineLeaksNoHandle();
};

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
