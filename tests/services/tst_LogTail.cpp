#include "LogTail.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

// Each step: "+text" appends to the file, "=text" replaces it, "?text" reads and expects text;
// "-" removes the file.
class tst_LogTail : public QObject
{
    Q_OBJECT

private slots:
    void followsTheFile_data();
    void followsTheFile();
};

void tst_LogTail::followsTheFile_data()
{
    QTest::addColumn<QStringList>("steps");
    QTest::newRow("starts at the last whole lines")
        << QStringList{"=first line\nsecond\nthird\n", "?third\n", "?"};
    QTest::newRow("appended lines; a line being written waits")
        << QStringList{"=", "?", "+a\nb", "?a\n", "+c\n", "?bc\n"};
    QTest::newRow("a file that shrank is read from its start")
        << QStringList{"=aaaa\n", "?aaaa\n", "=b\n", "?b\n"};
    QTest::newRow("a missing file reads as nothing until it comes")
        << QStringList{"-", "?", "=x\n", "?x\n", "-", "?", "=y\n", "?y\n"};
}

void tst_LogTail::followsTheFile()
{
    QFETCH(QStringList, steps);
    QTemporaryDir dir;
    const QString path = dir.filePath("engine.log");
    LogTail tail(path, 10);
    for (const QString &step : std::as_const(steps)) {
        const QByteArray text = step.mid(1).toUtf8();
        QFile file(path);
        if (step.startsWith('-')) {
            file.remove();
        } else if (step.startsWith('?')) {
            QCOMPARE(tail.readNew(), QString::fromUtf8(text));
        } else {
            const auto mode = step.startsWith('+') ? QIODevice::Append : QIODevice::Truncate;
            QVERIFY(file.open(QIODevice::WriteOnly | mode));
            file.write(text);
        }
    }
}

QTEST_GUILESS_MAIN(tst_LogTail)
#include "tst_LogTail.moc"
