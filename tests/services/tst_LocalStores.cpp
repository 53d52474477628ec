#include "CRegistry.h"
#include "LocalSettings.h"
#include "PromptSeam.h"
#include "RegistrySettings.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {
const char *const kWriterVariable = "CC_LOCALSTORES_WRITER";
const QString kApp = u"Quillon"_s;
const QString kBrand = u"Quill On"_s;

QString valueFor(int index)
{
    return QString(200, QChar(u'a' + index % 26));
}

// Child mode: write settings in a loop until killed.
int runWriter(const QString &folder)
{
    LocalSettings::SetBaseFolder(folder);
    for (int i = 0;; ++i) {
        SaveSetting(kApp, u"Crash"_s, u"Key%1"_s.arg(i % 40), valueFor(i));
        std::fputc('.', stdout);
        std::fflush(stdout);
    }
}
} // namespace

class tst_LocalStores : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void missingKeysYieldTheDefaultAndTheStoresNeverMeet();
    void registryKeysAreCreatedAndEnumerated();
    void settingsFileStaysWholeWhenTheWriterIsKilled();
    void unsavedSettingsAreReportedOncePerRun();

private:
    std::unique_ptr<QTemporaryDir> m_dir;
};

void tst_LocalStores::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    LocalSettings::SetBaseFolder(m_dir->path());
}

void tst_LocalStores::missingKeysYieldTheDefaultAndTheStoresNeverMeet()
{
    QCOMPARE(GetSetting(kApp, u"Quillon"_s, u"LogFileWanted"_s, u"1"_s), u"1"_s);
    QCOMPARE(GetRegistrySetting(kBrand, u"CONFIGCONSUMER"_s, u"PrefsVersion"_s, u"None"_s), u"None"_s);
    CRegistry registry;
    QCOMPARE(registry.GetRegistryValue(u"HKey_Current_User"_s, u"Software\\Nowhere"_s, u"x"_s, u"-237237"_s),
             u"-237237"_s);
    // Reading must not create the key.
    QVERIFY(!registry.OpenKey(u"Software\\Nowhere"_s));

    SaveSetting(kApp, u"CONFIGCONSUMER"_s, u"ConfigAppFirstRun"_s, u"1"_s);
    QCOMPARE(GetSetting(kApp, u"CONFIGCONSUMER"_s, u"ConfigAppFirstRun"_s, u"0"_s), u"1"_s);
    QCOMPARE(GetSetting(kApp, u"Other"_s, u"ConfigAppFirstRun"_s, u"0"_s), u"0"_s);
    // A value holding a list separator must come back as the same text.
    SaveSetting(kApp, u"NetworkModule"_s, u"proxy"_s, u"a, b"_s);
    QCOMPARE(GetSetting(kApp, u"NetworkModule"_s, u"proxy"_s), u"a, b"_s);

    const QString section = u"CONFIGCONSUMER"_s;
    const QString key = u"PrefsVersion"_s;
    // The Outlook defaults page reads the vendor branch under "Quillon" and writes the local store.
    SaveSetting(kApp, section, key, u"0.9.6"_s);
    QCOMPARE(GetRegistrySetting(kApp, section, key, u"None"_s), u"None"_s);
    QCOMPARE(GetRegistrySetting(kBrand, section, key, u"None"_s), u"None"_s);

    QVERIFY(PutRegistrySetting(kApp, section, key, u"0.8.0"_s));
    QCOMPARE(GetSetting(kApp, section, key, u"x"_s), u"0.9.6"_s);
    QCOMPARE(GetRegistrySetting(kApp, section, key, u"None"_s), u"0.8.0"_s);
    // The product word is part of the path: "Quillon" and "Quill On" are different keys.
    QCOMPARE(GetRegistrySetting(kBrand, section, key, u"None"_s), u"None"_s);
    QVERIFY(PutRegistrySetting(kBrand, section, u"SupressDeleteWarnings"_s, u"1"_s));
    QCOMPARE(GetSetting(kBrand, section, u"SupressDeleteWarnings"_s, u"0"_s), u"0"_s);
}

void tst_LocalStores::registryKeysAreCreatedAndEnumerated()
{
    CRegistry registry;
    QVERIFY(registry.OpenKey(u"Software\\Marrowby Software\\Quill On\\A"_s, true));
    QVERIFY(registry.IsNewKey());
    QVERIFY(registry.PutLong(u"Count"_s, -5));
    QCOMPARE(registry.GetLong(u"Count"_s, 0), -5);
    QCOMPARE(registry.GetLong(u"Absent"_s, 9), 9);
    QVERIFY(registry.PutString(u"Name"_s, u"x\\y"_s));
    registry.CloseKey();
    QVERIFY(registry.PutRegistryValue(u"HKEY_CURRENT_USER"_s, u"Software\\Marrowby Software\\Quill On\\B"_s,
                                      u"v"_s, u"1"_s));

    registry.SetDefaultKey(u"Software\\Marrowby Software\\Quill On\\A"_s);
    QVERIFY(registry.OpenKey());
    QVERIFY(!registry.IsNewKey());
    QCOMPARE(registry.GetString(u"Name"_s), u"x\\y"_s);

    QVERIFY(registry.OpenKey(u"Software\\Marrowby Software\\Quill On"_s));
    QStringList subkeys;
    for (QString name = registry.FindFirst(); !name.isEmpty(); name = registry.FindNext())
        subkeys << name;
    subkeys.sort();
    QCOMPARE(subkeys, QStringList({u"A"_s, u"B"_s}));
}

void tst_LocalStores::settingsFileStaysWholeWhenTheWriterIsKilled()
{
    const QString file = LocalSettings::FilePath(kApp);
    for (int round = 0; round < 3; ++round) {
        QProcess writer;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QString::fromLatin1(kWriterVariable), m_dir->path());
        writer.setProcessEnvironment(environment);
        writer.start(QCoreApplication::applicationFilePath(), {});
        QVERIFY(writer.waitForStarted());
        // Kill it somewhere inside its loop, after some saves have been reported. Each save
        // syncs the file to disk, which a busy machine makes slow: wait for a few, patiently.
        QByteArray reported;
        QTRY_VERIFY_WITH_TIMEOUT((reported += writer.readAllStandardOutput()).size() >= 3 + round * 2, 60000);
        writer.kill();
        QVERIFY(writer.waitForFinished());

        QSettings settings(file, QSettings::IniFormat);
        QCOMPARE(settings.status(), QSettings::NoError);
        settings.beginGroup(u"Crash"_s);
        const QStringList keys = settings.childKeys();
        QVERIFY(!keys.isEmpty());
        for (const QString &key : keys)
            QCOMPARE(settings.value(key).toString().size(), 200);
    }
}

void tst_LocalStores::unsavedSettingsAreReportedOncePerRun()
{
    QFile blocker(m_dir->filePath(u"file"_s));
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    LocalSettings::SetBaseFolder(blocker.fileName() + u"/below"_s);
    LocalSettings::ResetUnsavedReport();
    QStringList alerts;
    const auto previous = PromptSeam::SetHandler([&alerts](Prompt &prompt) {
        alerts << prompt.mainText + u' ' + prompt.extendedText;
        return 0;
    });
    QVERIFY(!LocalSettings::Save(kApp, u"S"_s, u"K"_s, u"1"_s));
    CRegistry registry;
    QVERIFY(registry.OpenKey(u"Software\\Marrowby Software\\Quill On\\A"_s, true));
    QVERIFY(!registry.PutString(u"Name"_s, u"x"_s));
    PromptSeam::SetHandler(previous);
    QCOMPARE(alerts.size(), 1);
    QVERIFY2(alerts.at(0).contains(u"could not be saved"_s), qPrintable(alerts.at(0)));
}

int main(int argc, char **argv)
{
    const QString writerFolder = qEnvironmentVariable(kWriterVariable);
    if (!writerFolder.isEmpty())
        return runWriter(writerFolder);
    QCoreApplication app(argc, argv);
    QStandardPaths::setTestModeEnabled(true);
    tst_LocalStores test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_LocalStores.moc"
