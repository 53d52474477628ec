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
        Bind({
            {.control = "chkFlag", .store = &store, .key = "chkFlag", .defaultValue = "1", .codec = C::Flag},
            {.control = "chkWord",
             .store = &store,
             .key = "chkWord",
             .defaultValue = "False",
             .codec = C::Word},
            {.control = "optOn",
             .store = &store,
             .key = "optOn",
             .defaultValue = "True",
             .codec = C::Word,
             .offOption = "optOff"},
            {.control = "txtText",
             .store = &store,
             .key = "txtText",
             .defaultValue = "none",
             .codec = C::Text},
            {.control = "txtSecret", .store = &store, .key = "txtSecret", .codec = C::Secret},
            {.control = "sliderNumber",
             .store = &store,
             .key = "sliderNumber",
             .defaultValue = "3",
             .codec = C::Number},
            {.control = "txtNumber",
             .store = &store,
             .key = "txtNumber",
             .defaultValue = "7",
             .codec = C::Number},
            {.control = "txtSeconds",
             .store = &store,
             .key = "txtSeconds",
             .defaultValue = "3600",
             .codec = C::Seconds,
             .unit = "cboSeconds"},
            {.control = "cboIndex",
             .store = &store,
             .key = "cboIndex",
             .defaultValue = "0",
             .codec = C::ChoiceIndex},
            {.control = "cboText",
             .store = &store,
             .key = "cboText",
             .defaultValue = "itunes",
             .codec = C::ChoiceText,
             .choices = {"itunes", "windowsmedia"}},
            {.store = &store,
             .key = "Article_Theme",
             .defaultValue = "Default",
             .codec = C::ChoiceText,
             .choices = {"Plain", "Full", "Default"},
             .options = {"optPlain", "optFull", "optDefault"}},
        });
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
    void anInvalidFieldWritesNothing();
};

void tst_FieldTable::everyCodecShowsAndStoresItsText_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("stored"); // "-" for nothing stored
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("storedBack");

    QTest::newRow("flag set") << "chkFlag"
                              << "1"
                              << "on"
                              << "1";
    QTest::newRow("flag clear") << "chkFlag"
                                << "0"
                                << "off"
                                << "0";
    QTest::newRow("flag default") << "chkFlag"
                                  << "-"
                                  << "on"
                                  << "1";
    QTest::newRow("flag unreadable") << "chkFlag"
                                     << "yes"
                                     << "on"
                                     << "1";
    QTest::newRow("word true") << "chkWord"
                               << "True"
                               << "on"
                               << "True";
    QTest::newRow("word any case") << "chkWord"
                                   << "true"
                                   << "on"
                                   << "True";
    QTest::newRow("word default") << "chkWord"
                                  << "-"
                                  << "off"
                                  << "False";
    QTest::newRow("word false chooses the other option") << "optOn"
                                                         << "False"
                                                         << "off"
                                                         << "False";
    QTest::newRow("word option default") << "optOn"
                                         << "-"
                                         << "on"
                                         << "True";
    QTest::newRow("text") << "txtText"
                          << "a b"
                          << "a b"
                          << "a b";
    QTest::newRow("text default") << "txtText"
                                  << "-"
                                  << "none"
                                  << "none";
    QTest::newRow("secret") << "txtSecret"
                            << "pw"
                            << "pw"
                            << "pw";
    QTest::newRow("slider") << "sliderNumber"
                            << "5"
                            << "5"
                            << "5";
    QTest::newRow("slider not a number") << "sliderNumber"
                                         << "x"
                                         << "3"
                                         << "3";
    QTest::newRow("number in a text box") << "txtNumber"
                                          << "42"
                                          << "42"
                                          << "42";
    QTest::newRow("seconds in hours") << "txtSeconds"
                                      << "7200"
                                      << "2 1"
                                      << "7200";
    QTest::newRow("seconds in days") << "txtSeconds"
                                     << "86400"
                                     << "1 2"
                                     << "86400";
    QTest::newRow("seconds in minutes") << "txtSeconds"
                                        << "5400"
                                        << "90 0"
                                        << "5400";
    QTest::newRow("seconds negative show the default") << "txtSeconds"
                                                       << "-1"
                                                       << "1 1"
                                                       << "3600";
    QTest::newRow("index") << "cboIndex"
                           << "2"
                           << "2"
                           << "2";
    QTest::newRow("index out of range") << "cboIndex"
                                        << "9"
                                        << "0"
                                        << "0";
    QTest::newRow("choice text") << "cboText"
                                 << "windowsmedia"
                                 << "1"
                                 << "windowsmedia";
    QTest::newRow("choice text default") << "cboText"
                                         << "-"
                                         << "0"
                                         << "itunes";
    QTest::newRow("choice text unknown") << "cboText"
                                         << "winamp"
                                         << "0"
                                         << "itunes";
    QTest::newRow("options") << "Article_Theme"
                             << "Full"
                             << "optFull"
                             << "Full";
    QTest::newRow("options default") << "Article_Theme"
                                     << "-"
                                     << "optDefault"
                                     << "Default";
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
