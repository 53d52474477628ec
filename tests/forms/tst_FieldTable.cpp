#include "ConfigHost.h"
#include "ConfigPage.h"
#include "PromptSeam.h"
#include "SettingStore.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QRadioButton>
#include <QSlider>
#include <QTest>
#include <QVBoxLayout>

namespace {

class MemoryStore : public SettingStore
{
public:
    Values Read(const Values &defaults) override
    {
        Values values = defaults;
        for (auto it = values.begin(); it != values.end(); ++it)
            it.value() = stored.value(it.key(), it.value());
        return values;
    }
    void Write(const Values &values) override
    {
        stored.insert(values);
        ++writes;
    }

    Values stored;
    int writes = 0;
};

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

// One control of every kind a codec serves, each bound under its own name as key.
class EveryCodecPage : public ConfigPage
{
public:
    explicit EveryCodecPage(MemoryStore &store)
    {
        auto *layout = new QVBoxLayout(this);
        const auto add = [&](QWidget *control, const QString &name) {
            control->setObjectName(name);
            layout->addWidget(control);
        };
        for (const char *name : {"chkFlag", "chkWord"})
            add(new QCheckBox, name);
        // Options are exclusive within their parent: one box per choice.
        for (const QStringList &group :
             {QStringList{"optOn", "optOff"}, {"optPlain", "optFull", "optDefault"}}) {
            auto *box = new QWidget(this);
            layout->addWidget(box);
            for (const QString &name : group)
                (new QRadioButton(box))->setObjectName(name);
        }
        for (const char *name : {"txtText", "txtSecret", "txtNumber", "txtSeconds"})
            add(new QLineEdit, name);
        auto *slider = new QSlider;
        slider->setRange(1, 5);
        add(slider, "sliderNumber");
        for (const char *name : {"cboSeconds", "cboIndex", "cboText"}) {
            auto *box = new QComboBox;
            box->addItems({"first", "second", "third"});
            add(box, name);
        }
        using C = FieldCodec;
        const auto field = [&store](const char *name, const char *fallback, FieldCodec codec) {
            return FieldBinding{
                .control = name, .store = &store, .key = name, .defaultValue = fallback, .codec = codec};
        };
        FieldBinding text = field("txtText", "none", C::Text);
        text.hotHelp = "Type here";
        FieldBinding onOption = field("optOn", "True", C::Word);
        onOption.offOption = "optOff";
        FieldBinding seconds = field("txtSeconds", "3600", C::Seconds);
        seconds.unit = "cboSeconds";
        FieldBinding choice = field("cboText", "itunes", C::ChoiceText);
        choice.choices = {"itunes", "windowsmedia"};
        FieldBinding theme = {.store = &store, .key = "Article_Theme", .defaultValue = "Default"};
        theme.codec = C::ChoiceText;
        theme.choices = {"Plain", "Full", "Default"};
        theme.options = {"optPlain", "optFull", "optDefault"};
        Bind({field("chkFlag", "1", C::Flag), field("chkWord", "False", C::Word), onOption, text,
              field("txtSecret", "", C::Secret), field("sliderNumber", "3", C::Number),
              field("txtNumber", "7", C::Number), seconds, field("cboIndex", "0", C::ChoiceIndex), choice,
              theme});
    }
};

// What a control shows, in one word: a button "on"/"off", a text, a number and its unit,
// the index of a list, or the option that is chosen.
QString Shown(const ConfigPage &page, const QString &key)
{
    if (key == "Article_Theme") {
        for (const char *name : {"optPlain", "optFull", "optDefault"}) {
            if (page.findChild<QRadioButton *>(name)->isChecked())
                return name;
        }
        return "none";
    }
    QWidget *control = page.findChild<QWidget *>(key);
    if (auto *button = qobject_cast<QAbstractButton *>(control))
        return button->isChecked() ? "on" : "off";
    if (auto *slider = qobject_cast<QSlider *>(control))
        return QString::number(slider->value());
    if (auto *box = qobject_cast<QComboBox *>(control))
        return QString::number(box->currentIndex());
    const QString text = qobject_cast<QLineEdit *>(control)->text();
    if (key == "txtSeconds")
        return text + " " + QString::number(page.findChild<QComboBox *>("cboSeconds")->currentIndex());
    return text;
}

} // namespace

class tst_FieldTable : public QObject
{
    Q_OBJECT
private slots:
    void everyCodecShowsAndStoresItsText_data();
    void everyCodecShowsAndStoresItsText();
    void editsMarkThePageAndResetHotHelp();
    void anInvalidFieldWritesNothing();
};

void tst_FieldTable::everyCodecShowsAndStoresItsText_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("stored"); // "-" for nothing stored
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("storedBack");
    const auto row = [](const char *name, const char *key, const char *stored, const char *shown,
                        const char *storedBack) {
        QTest::newRow(name) << QString(key) << QString(stored) << QString(shown) << QString(storedBack);
    };
    row("flag set", "chkFlag", "1", "on", "1");
    row("flag clear", "chkFlag", "0", "off", "0");
    row("flag default", "chkFlag", "-", "on", "1");
    row("flag unreadable", "chkFlag", "yes", "on", "1");
    row("word true", "chkWord", "True", "on", "True");
    row("word any case", "chkWord", "true", "on", "True");
    row("word default", "chkWord", "-", "off", "False");
    row("word false chooses the other option", "optOn", "False", "off", "False");
    row("word option default", "optOn", "-", "on", "True");
    row("text", "txtText", "a b", "a b", "a b");
    row("text default", "txtText", "-", "none", "none");
    row("secret", "txtSecret", "pw", "pw", "pw");
    row("slider", "sliderNumber", "5", "5", "5");
    row("slider not a number", "sliderNumber", "x", "3", "3");
    row("number in a text box", "txtNumber", "42", "42", "42");
    row("seconds in hours", "txtSeconds", "7200", "2 1", "7200");
    row("seconds in days", "txtSeconds", "86400", "1 2", "86400");
    row("seconds in minutes", "txtSeconds", "5400", "90 0", "5400");
    row("seconds negative show the default", "txtSeconds", "-1", "1 1", "3600");
    row("index", "cboIndex", "2", "2", "2");
    row("index out of range", "cboIndex", "9", "0", "0");
    row("choice text", "cboText", "windowsmedia", "1", "windowsmedia");
    row("choice text default", "cboText", "-", "0", "itunes");
    row("choice text unknown", "cboText", "winamp", "0", "itunes");
    row("options", "Article_Theme", "Full", "optFull", "Full");
    row("options default", "Article_Theme", "-", "optDefault", "Default");
}

void tst_FieldTable::everyCodecShowsAndStoresItsText()
{
    QFETCH(QString, key);
    QFETCH(QString, stored);
    QFETCH(QString, shown);
    QFETCH(QString, storedBack);
    MemoryStore store;
    if (stored != "-")
        store.stored.insert(key, stored);
    EveryCodecPage page(store);
    page.LoadValues();
    QVERIFY(!page.Dirty());
    QCOMPARE(Shown(page, key), shown);

    page.Apply();
    QCOMPARE(store.writes, 1);
    QCOMPARE(store.stored.value(key), storedBack);
}

void tst_FieldTable::editsMarkThePageAndResetHotHelp()
{
    MemoryStore store;
    CountingHost host;
    EveryCodecPage page(store);
    page.SetHost(&host);
    page.LoadValues();
    QCOMPARE(host.statusChanges, 0);
    auto *text = page.findChild<QLineEdit *>("txtText");
    const auto hover = [&] {
        QEvent enter(QEvent::Enter);
        QCoreApplication::sendEvent(text, &enter);
    };
    // Hot help shows once in a row; an edit clears it, and so does the host's reset message.
    hover();
    hover();
    text->setText("typed");
    QVERIFY(page.Dirty());
    QCOMPARE(host.statusChanges, 1);
    hover();
    QCOMPARE(page.SendPropMessage("ResetHelpText", QString()), "ok");
    hover();
    QCOMPARE(host.hotHelp, QStringList({"Type here", "", "Type here", "Type here"}));
    page.Apply();
    QVERIFY(!page.Dirty());
    page.enabled(false);
    QVERIFY(!text->isEnabled());
}

void tst_FieldTable::anInvalidFieldWritesNothing()
{
    MemoryStore store;
    EveryCodecPage page(store);
    page.LoadValues();
    page.findChild<QLineEdit *>("txtSeconds")->setText("soon");
    QVERIFY(page.Dirty());
    QStringList alerts;
    const auto previous = PromptSeam::SetHandler([&](Prompt &prompt) {
        alerts << prompt.extendedText;
        return 0;
    });
    page.Apply();
    PromptSeam::SetHandler(previous);
    QCOMPARE(store.writes, 0);
    QVERIFY(page.Dirty());
    QCOMPARE(alerts.size(), 1);
    QVERIFY(alerts.first().contains("\"soon\" is not a whole number"));
}

QTEST_MAIN(tst_FieldTable)
#include "tst_FieldTable.moc"
