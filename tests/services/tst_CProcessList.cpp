#include "CProcessList.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

using namespace Qt::StringLiterals;

namespace {
const char *const kIdleVariable = "CC_PROCESSLIST_IDLE";
}

class tst_CProcessList : public QObject
{
    Q_OBJECT

private slots:
    void findsItselfByNameInCapitals();
    void terminatesAProcessByName();
};

void tst_CProcessList::findsItselfByNameInCapitals()
{
    const CProcessList processes;
    QVERIFY(processes.ProcessCount() > 1);
    const QString ownName = QFileInfo(QCoreApplication::applicationFilePath()).fileName();
    QVERIFY(processes.IsProcessRunning(ownName.toUpper()));
    QVERIFY(!processes.IsProcessRunning(u"NO_SUCH_PROGRAM_"_s + ownName));
    // A name matches the whole last part of a path, never a piece of it.
    QVERIFY(!processes.IsProcessRunning(ownName.mid(1)));
    QVERIFY(!processes.IsProcessRunning(QString()));
}

void tst_CProcessList::terminatesAProcessByName()
{
    // A copy of this program under a name no other process has.
    QTemporaryDir dir;
    QFileInfo self(QCoreApplication::applicationFilePath());
    const QString copy =
        dir.filePath(u"Idle_"_s + QString::number(QCoreApplication::applicationPid()) +
                     (self.suffix().isEmpty() ? QString() : QLatin1Char('.') + self.suffix()));
    QVERIFY(QFile::copy(self.filePath(), copy));
    QProcess idle;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QString::fromLatin1(kIdleVariable), u"1"_s);
    idle.setProcessEnvironment(environment);
    idle.start(copy, {});
    QVERIFY(idle.waitForStarted());

    const QString name = QFileInfo(copy).fileName();
    QTRY_VERIFY(CProcessList().IsProcessRunning(name));
    CProcessList processes;
    QVERIFY(processes.ForceProcessTermination(name.toUpper()));
    QVERIFY(idle.waitForFinished(10000));
    QTRY_VERIFY(!CProcessList().IsProcessRunning(name));
}

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsSet(kIdleVariable)) {
        QThread::sleep(60);
        return 0;
    }
    QCoreApplication app(argc, argv);
    tst_CProcessList test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_CProcessList.moc"
