#include "ClientAccess.h"
#include "ConsumerSettings.h"
#include "IEPluginUI.h"
#include "LocalSettings.h"
#include "OptionsTestEngine.h"
#include "PodcastingUI.h"
#include "TagsUI.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>

namespace {

// "CONSUMER|section|key=value"
struct Setting
{
    QString consumer, section, key, value;
    static Setting Parse(const QString &text)
    {
        const QStringList place = text.section(QLatin1Char('='), 0, 0).split(QLatin1Char('|'));
        return {place.value(0), place.value(1), place.value(2), text.section(QLatin1Char('='), 1)};
    }
};

std::unique_ptr<ConfigPage> MakePage(const QString &name)
{
    if (name == QLatin1String("IEPluginUI"))
        return std::make_unique<IEPluginUI>();
    if (name == QLatin1String("PodcastingUI"))
        return std::make_unique<PodcastingUI>();
    return std::make_unique<TagsUI>();
}

// What a control shows: "1"/"0" for a check box or option, the index of a list, else its text.
QString Shown(QWidget *control)
{
    if (auto *button = qobject_cast<QAbstractButton *>(control))
        return button->isChecked() ? QStringLiteral("1") : QStringLiteral("0");
    if (auto *list = qobject_cast<QComboBox *>(control))
        return QString::number(list->currentIndex());
    if (auto *line = qobject_cast<QLineEdit *>(control))
        return line->text();
    if (auto *label = qobject_cast<QLabel *>(control))
        return label->text();
    return QStringLiteral("?");
}

void Change(QWidget *control, const QString &value)
{
    if (auto *button = qobject_cast<QAbstractButton *>(control))
        button->setChecked(value == QLatin1String("1"));
    else if (auto *list = qobject_cast<QComboBox *>(control))
        list->setCurrentIndex(value.toInt());
    else if (auto *line = qobject_cast<QLineEdit *>(control))
        line->setText(value);
}

} // namespace

class tst_OptionPageFields : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void fieldShowsAndStoresItsSetting_data();
    void fieldShowsAndStoresItsSetting();

private:
    QTemporaryDir m_settings;
    std::unique_ptr<OptionsTestEngine> m_engine;
};

void tst_OptionPageFields::initTestCase()
{
    QVERIFY(m_settings.isValid());
    LocalSettings::SetBaseFolder(m_settings.path());
}

void tst_OptionPageFields::init()
{
    m_engine = std::make_unique<OptionsTestEngine>();
    QVERIFY(m_engine->ready());
    ClientAccess::SetEngineClient(m_engine->client);
}

void tst_OptionPageFields::cleanup()
{
    ClientAccess::SetEngineClient(nullptr);
    m_engine.reset();
}

void tst_OptionPageFields::fieldShowsAndStoresItsSetting_data()
{
    QTest::addColumn<QString>("page");
    QTest::addColumn<QStringList>("stored");
    QTest::addColumn<QString>("control");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("changeTo");
    QTest::addColumn<QStringList>("storedAfter");
    const QString media = "MEDIACONSUMER|Settings|";
    const QString tags = "IEPLUGINCONSUMER|TagServices_Delicious|";
    QTest::newRow("file types handled by default") << "IEPluginUI" << QStringList() << "chkRSS"
                                                   << "1"
                                                   << "0" << QStringList{"ENGINE|FileTypeHandling|RSS=0"};
    QTest::newRow("OPML switched off")
        << "IEPluginUI" << QStringList{"ENGINE|FileTypeHandling|OPML=0"} << "chkOPML"
        << "0"
        << "1" << QStringList{"ENGINE|FileTypeHandling|OPML=1"};
    QTest::newRow("inline subscriptions") << "IEPluginUI" << QStringList() << "chkInlineTopLevel"
                                          << "0"
                                          << "1" << QStringList{"ENGINE||Inline Subscriptions=1"};
    QTest::newRow("media player default itunes")
        << "PodcastingUI" << QStringList() << "cboPodcast"
        << "0"
        << "1" << QStringList{media + "PodcastFilesToThisApp=windowsmedia"};
    QTest::newRow("windowsmedia is index 1")
        << "PodcastingUI" << QStringList{media + "PodcastFilesToThisApp=windowsmedia"} << "cboPodcast"
        << "1"
        << "0" << QStringList{media + "PodcastFilesToThisApp=itunes"};
    QTest::newRow("naming mode 1 by default") << "PodcastingUI" << QStringList() << "optStoreInAutoFolder"
                                              << "1"
                                              << "" << QStringList{media + "PlaylistNamingMode=1"};
    QTest::newRow("named playlist") << "PodcastingUI" << QStringList() << "optStoreInNamedFolder"
                                    << "0"
                                    << "1" << QStringList{media + "PlaylistNamingMode=2"};
    QTest::newRow("asking by default")
        << "PodcastingUI" << QStringList() << "OptPromptDownload"
        << "1"
        << "" << QStringList{media + "PromptForAutoDownload=1", media + "EnableAutoDownload=0"};
    QTest::newRow("always, auto-delete kept")
        << "PodcastingUI" << QStringList{media + "PromptForAutoDownload=1", media + "EnableAutoDelete=1"}
        << "OptAlwaysDownload"
        << "0"
        << "1"
        << QStringList{media + "PromptForAutoDownload=0", media + "EnableAutoDownload=1",
                       media + "EnableAutoDelete=1"};
    QTest::newRow("answered for all: yes")
        << "PodcastingUI" << QStringList{media + "PromptForAutoDownload=0", media + "EnableAutoDownload=1"}
        << "OptAlwaysDownload"
        << "1"
        << "" << QStringList{media + "EnableAutoDownload=1"};
    QTest::newRow("never") << "PodcastingUI" << QStringList{media + "PromptForAutoDownload=0"}
                           << "optNeverDownload"
                           << "1"
                           << ""
                           << QStringList{media + "PromptForAutoDownload=0", media + "EnableAutoDownload=0"};
    QTest::newRow("tag service account")
        << "TagsUI" << QStringList{tags + "UserName=alice"} << "txtTagServiceUsername"
        << "alice"
        << "bob" << QStringList{tags + "UserName=bob", "IEPLUGINCONSUMER|TagServices|1=Delicious"};
    QTest::newRow("tag service named") << "TagsUI" << QStringList() << "lblTagDisplayName"
                                       << "Delicious"
                                       << "" << QStringList{tags + "TagServiceDisplayName=Delicious"};
    QTest::newRow("tagging on") << "TagsUI" << QStringList() << "chkTaggingEnabled"
                                << "0"
                                << "1" << QStringList{tags + "Tagging=1"};
    QTest::newRow("tag counts off") << "TagsUI" << QStringList() << "chkTagCounts"
                                    << "1"
                                    << "0" << QStringList{"IEPLUGINCONSUMER||ShowTagCounts=0"};
}

void tst_OptionPageFields::fieldShowsAndStoresItsSetting()
{
    QFETCH(QString, page);
    QFETCH(QStringList, stored);
    QFETCH(QString, control);
    QFETCH(QString, shown);
    QFETCH(QString, changeTo);
    QFETCH(QStringList, storedAfter);
    quillon::SubscribeClient &client = *m_engine->client;
    for (const QString &text : stored) {
        const Setting setting = Setting::Parse(text);
        SetConsumerSetting(client, setting.consumer, setting.section, setting.key, setting.value);
    }
    const std::unique_ptr<ConfigPage> form = MakePage(page);
    auto *field = form->findChild<QWidget *>(control);
    QVERIFY(field);
    QCOMPARE(Shown(field), shown);
    QVERIFY(!form->Dirty());
    if (!changeTo.isEmpty()) {
        Change(field, changeTo);
        QVERIFY(form->Dirty());
    }
    form->Apply();
    QVERIFY(!form->Dirty());
    for (const QString &text : storedAfter) {
        const Setting setting = Setting::Parse(text);
        QCOMPARE(GetConsumerSetting(client, setting.key, "unset", setting.consumer, setting.section),
                 setting.value);
    }
}

QTEST_MAIN(tst_OptionPageFields)
#include "tst_OptionPageFields.moc"
