#include "ImapSession.h"
#include "TestFiles.h"

#include <QFile>
#include <QProcess>
#include <QTest>

namespace {
// A hostile IMAP server in a child process (the session waits for its answers): it greets,
// takes the first command, misbehaves as told, and prints all it received when it is done.
const char *const kServer = R"(import socket,sys
mode=sys.argv[1]
s=socket.socket();s.bind(('127.0.0.1',0));s.listen()
print(s.getsockname()[1],flush=True)
c,_=s.accept();s.close();c.settimeout(20)
caps=b' [CAPABILITY IMAP4rev1 STARTTLS LOGINDISABLED]' if mode=='logindisabled' else b''
got=b''
try:
  c.sendall(b'* OK'+caps+b' ready\r\n')
  got+=c.recv(100000)
  if mode=='literal': c.sendall(b'* 1 FETCH (BODY[] {99999999999}\r\n')
  if mode=='literals': c.sendall(b'* 1 FETCH ('+(b'A {4000000}\r\n'+b'x'*4000000+b' ')*10+b')\r\n')
  while mode=='untagged': c.sendall(b'* OK noise\r\n'*100000)
  while mode=='line': c.sendall(b'x'*65536)
  while True:
    more=c.recv(100000)
    if not more: break
    got+=more
except Exception: pass
print(got,flush=True)
)";

qint64 peakKiB()
{
    return TestFiles::procStatusKiB(QStringLiteral("self"), "VmHWM");
}
} // namespace

// The delivery's IMAP side against servers that try to exhaust it or to get the password in clear.
class tst_ImapLimits : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hostileServersGetNothing_data();
    void hostileServersGetNothing();
};

void tst_ImapLimits::hostileServersGetNothing_data()
{
    QTest::addColumn<QString>("mode");
    QTest::addColumn<bool>("tls");
    QTest::addColumn<QString>("error");
    QTest::newRow("one huge literal") << "literal" << false << "literal of 99999999999";
    QTest::newRow("literals adding up") << "literals" << false << "literal of 4000000";
    QTest::newRow("endless untagged data") << "untagged" << false << "untagged data";
    QTest::newRow("endless line") << "line" << false << "line over";
    QTest::newRow("LOGINDISABLED") << "logindisabled" << false << "LOGINDISABLED";
    QTest::newRow("TLS asked, none offered") << "plain" << true << "does not answer";
}

void tst_ImapLimits::hostileServersGetNothing()
{
    QFETCH(QString, mode);
    QFETCH(bool, tls);
    QFETCH(QString, error);
    QProcess server;
    server.start(QStringLiteral("python3"), {QStringLiteral("-c"), QString::fromLatin1(kServer), mode});
    QVERIFY(server.waitForReadyRead(10000));
    ImapSession::Account account;
    account.port = quint16(server.readLine().trimmed().toUInt());
    account.tls = tls;
    account.user = QStringLiteral("ann");
    account.password = QStringLiteral("s3cret-pw");
    const qint64 before = peakKiB();

    ImapSession session;
    QString why;
    QVERIFY(!session.open(account, &why));
    QVERIFY2(why.contains(error), qPrintable(why));
    QVERIFY(!session.isOpen());
    QVERIFY2(peakKiB() - before < 100 * 1024, qPrintable(QString::number(peakKiB() - before)));
    QVERIFY(server.waitForFinished(30000));
    QVERIFY(!server.readAll().contains("s3cret-pw"));
}

QTEST_GUILESS_MAIN(tst_ImapLimits)
#include "tst_ImapLimits.moc"
