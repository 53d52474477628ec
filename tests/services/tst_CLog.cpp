#include "CLog.h"
#include "LocalSettings.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
const QString kApp = u"Quillon"_s;

QStringList logLines(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList lines = QString::fromUtf8(file.readAll()).split(u"\r\n"_s);
    lines.removeLast(); // after the last line end
    return lines;
}
} // namespace

class tst_CLog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void createsTheFileAppendsTabSeparatedLinesUnlessSwitchedOff();
    void defaultPathIsInTheUserFolderWhichIsCreated();

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_logPath;
};

void tst_CLog::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void tst_CLog::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    LocalSettings::SetBaseFolder(m_dir->path());
    m_logPath = m_dir->filePath(u"log.txt"_s);
    SaveSetting(kApp, kApp, u"LogFilePathName"_s, m_logPath);
}

void tst_CLog::createsTheFileAppendsTabSeparatedLinesUnlessSwitchedOff()
{
    QVERIFY(!QFile::exists(m_logPath));
    CLog::SaveMessage(u"one"_s, u"two"_s, u"three"_s);
    CLog::SaveMessage(u"second"_s);
    // Switched off, only forced lines are written.
    SaveSetting(kApp, kApp, u"LogFileWanted"_s, u"0"_s);
    CLog::SaveMessage(u"dropped"_s);
    CLog::SaveMessage(u"forced"_s, QString(), QString(), true);
    SaveSetting(kApp, kApp, u"LogFileWanted"_s, u"1"_s);
    CLog::SaveMessage(u"wanted"_s);

    QStringList fields;
    for (const QString &line : logLines(m_logPath)) {
        QVERIFY(!line.section(u'\t', 0, 0).isEmpty()); // the time
        fields << line.section(u'\t', 1);
    }
    QCOMPARE(fields, QStringList({"one\ttwo\tthree", "second\t\t", "forced\t\t", "wanted\t\t"}));
}

void tst_CLog::defaultPathIsInTheUserFolderWhichIsCreated()
{
    LocalSettings::Delete(kApp, kApp, u"LogFilePathName"_s);
    // Runs last: the environment is this process's own.
    const QString folder = QDir::toNativeSeparators(m_dir->path());
    const QString earlierTail = QDir::toNativeSeparators(u"/Marrowby Software/Quill On/QuillonLog.txt"_s);
    qputenv("HOMEDRIVE", folder.left(2).toLocal8Bit());
    qputenv("HOMEPATH", folder.mid(2).toLocal8Bit());
    QCOMPARE(CLog::EarlierUserFolder() + u"QuillonLog.txt"_s, folder + earlierTail);
#ifdef Q_OS_WIN
    QCOMPARE(CLog::LogFilePath(), folder + earlierTail);
#else
    // The state folder, not the top of the home; a log of the earlier layout moves there once.
    qputenv("XDG_STATE_HOME", QFile::encodeName(m_dir->filePath(u"state"_s)));
    const QString current = m_dir->filePath(u"state/ConfigConsumer/QuillonLog.txt"_s);
    QCOMPARE(CLog::LogFilePath(), current);
    QVERIFY(QDir().mkpath(folder + u"/Marrowby Software/Quill On"_s));
    QFile earlier(folder + earlierTail);
    QVERIFY(earlier.open(QIODevice::WriteOnly) && earlier.write("kept\r\n") == 6);
    earlier.close();
    CLog::MoveEarlierLog();
    QVERIFY(!QFile::exists(folder + u"/Marrowby Software"_s));
    CLog::SaveMessage(u"after the move"_s);
    QCOMPARE(logLines(current).size(), 2);
    QCOMPARE(logLines(current).first(), u"kept"_s);
    CLog::MoveEarlierLog();
    QCOMPARE(logLines(current).size(), 2);
#endif
}

QTEST_GUILESS_MAIN(tst_CLog)
#include "tst_CLog.moc"
