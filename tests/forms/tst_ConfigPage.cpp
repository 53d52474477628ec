#include "ConfigHost.h"
#include "ConfigPage.h"

#include <QLineEdit>
#include <QTest>

namespace {

// Counts what a page reports to its host.
class CountingHost : public ConfigHost
{
public:
    void SetHost(QObject *) override {}
    void SetClient(quillon::SubscribeClientPtr) override {}
    QString GetConsumerID() const override { return "CONFIGCONSUMER"; }
    QString GetNewsSubscriptionType() const override { return "NEWS"; }
    void OnStatusChange() override { ++statusChanges; }
    void EditConfiguration(qint32, bool &handled) override { handled = false; }
    void SetHotHelp(const QString &text, const QString &) override { hotHelp.append(text); }
    void SetStatusText(const QString &) override {}
    void SetBusy(bool) override {}
    QStringList Categories() const override { return {}; }

    int statusChanges = 0;
    QStringList hotHelp;
};

// One field; loading it must not count as a change.
class OneFieldPage : public ConfigPage
{
public:
    OneFieldPage() : field(new QLineEdit(this))
    {
        connect(field, &QLineEdit::textChanged, this, [this] { MarkDirty(); });
        SetHotHelpText("txtField", "Type here");
    }
    void Apply() override { SetDirty(false); }
    void LoadValues() override
    {
        const auto loading = LoadingGuard();
        field->setText("stored");
    }
    void Hover() { ShowHotHelp("txtField"); }

    QLineEdit *field;
};

bool callDirty(ConfigPage &page)
{
    bool dirty = false;
    QMetaObject::invokeMethod(&page, "Dirty", Q_RETURN_ARG(bool, dirty));
    return dirty;
}

} // namespace

class tst_ConfigPage : public QObject
{
    Q_OBJECT
private slots:
    void onlyUserChangesMakeThePageDirty();
    void hotHelpIsShownOncePerControlUntilReset();
};

void tst_ConfigPage::onlyUserChangesMakeThePageDirty()
{
    CountingHost host;
    OneFieldPage page;
    QVERIFY(QMetaObject::invokeMethod(&page, "SetHost", Q_ARG(ConfigHost *, &host)));
    QVERIFY(QMetaObject::invokeMethod(&page, "LoadValues"));
    QCOMPARE(page.field->text(), "stored");
    QVERIFY(!callDirty(page));
    QCOMPARE(host.statusChanges, 0);

    page.field->setText("typed");
    QVERIFY(callDirty(page));
    QCOMPARE(host.statusChanges, 1);
    QVERIFY(QMetaObject::invokeMethod(&page, "Apply"));
    QVERIFY(!callDirty(page));

    QVERIFY(QMetaObject::invokeMethod(&page, "enabled", Q_ARG(bool, false)));
    QVERIFY(!page.field->isEnabled());
    bool safe = false;
    QVERIFY(QMetaObject::invokeMethod(&page, "SafeToApply", Q_RETURN_ARG(bool, safe)));
    QVERIFY(safe);
}

void tst_ConfigPage::hotHelpIsShownOncePerControlUntilReset()
{
    CountingHost host;
    OneFieldPage page;
    page.SetHost(&host);
    page.Hover();
    page.Hover();
    QCOMPARE(host.hotHelp, QStringList{"Type here"});
    QString answer;
    QVERIFY(QMetaObject::invokeMethod(&page, "SendPropMessage", Q_RETURN_ARG(QString, answer),
                                      Q_ARG(QString, "ResetHelpText"), Q_ARG(QString, QString())));
    QCOMPARE(answer, "ok");
    page.Hover();
    QCOMPARE(host.hotHelp.size(), 2);
    QCOMPARE(page.SendPropMessage("Reload", "x"), "ok");
}

QTEST_MAIN(tst_ConfigPage)
#include "tst_ConfigPage.moc"
